#include "tests/linux/NotificationStandIn.h"

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>
#include <utility>

namespace paneweld_tests {

namespace {

constexpr auto service = "org.freedesktop.Notifications";
constexpr auto object = "/org/freedesktop/Notifications";
constexpr std::uint32_t dismissedByUser = 2;
constexpr std::uint32_t closedByProgram = 3;

} // namespace

NotificationStandIn::NotificationStandIn(std::string busAddress)
    : BusPeer(std::move(busAddress), service)
{
    start();
}

int NotificationStandIn::handleCall(sd_bus_message* message)
{
    if (sd_bus_message_is_method_call(message, service, "Notify"))
        return show(message);
    if (sd_bus_message_is_method_call(message, service, "CloseNotification")) {
        std::uint32_t number = 0;
        EXPECT_GE(sd_bus_message_read(message, "u", &number), 0);
        bool isOpen = false;
        {
            std::lock_guard const lock(mutex());
            isOpen = m_open == number;
            if (isOpen)
                m_open = 0;
        }
        if (isOpen)
            emitClosed(number, closedByProgram);
        return sd_bus_reply_method_return(message, "");
    }
    return 0;
}

int NotificationStandIn::show(sd_bus_message* message)
{
    char const *app = nullptr, *icon = nullptr, *title = nullptr, *body = nullptr, *name = nullptr, *text = nullptr;
    std::uint32_t replaced = 0;
    EXPECT_GE(sd_bus_message_read(message, "susss", &app, &replaced, &icon, &title, &body), 0);
    auto line = std::string(title) + "|" + body + "|";
    EXPECT_GE(sd_bus_message_enter_container(message, 'a', "s"), 0);
    while (sd_bus_message_read(message, "ss", &name, &text) > 0)
        line += (line.ends_with('|') ? "" : ",") + std::string(name) + "=" + text;
    sd_bus_message_exit_container(message);
    std::lock_guard const lock(mutex());
    m_client = sd_bus_message_get_sender(message);
    m_shown.push_back(line);
    m_open = replaced != 0 && replaced == m_open ? replaced : ++m_count;
    return sd_bus_reply_method_return(message, "u", m_open);
}

void NotificationStandIn::leave()
{
    stop();
    m_open = 0;
    m_unheard = 0;
}

void NotificationStandIn::comeBack()
{
    m_unheard = m_client.empty() ? 0 : 1;
    start();
    if (m_unheard == 0)
        return;
    onThread([this] { askWhetherHeard(); });
}

std::vector<std::string> NotificationStandIn::shown() const
{
    std::lock_guard const lock(mutex());
    return m_shown;
}

std::string NotificationStandIn::open() const
{
    std::lock_guard const lock(mutex());
    return m_open != 0 ? m_shown.back() : std::string();
}

void NotificationStandIn::emitClosed(std::uint32_t number, std::uint32_t reason)
{
    EXPECT_GE(sd_bus_emit_signal(bus(), object, service, "NotificationClosed", "uu", number, reason), 0);
}

void NotificationStandIn::press(std::string const& action)
{
    act([this, action](std::uint32_t number) {
        EXPECT_GE(sd_bus_emit_signal(bus(), object, service, "ActionInvoked", "us", number, action.c_str()), 0);
        emitClosed(number, dismissedByUser);
    });
}

void NotificationStandIn::dismiss()
{
    act([this](std::uint32_t number) { emitClosed(number, dismissedByUser); });
}

void NotificationStandIn::act(std::function<void(std::uint32_t)> done)
{
    {
        std::lock_guard const lock(mutex());
        ++m_unheard;
    }
    onThread([this, done = std::move(done)] {
        std::uint32_t number = 0;
        {
            std::lock_guard const lock(mutex());
            number = std::exchange(m_open, 0);
        }
        done(number);
        askWhetherHeard();
    });
}

// A bus keeps the order of what one connection sends to another: who answers this has heard what came before.
void NotificationStandIn::askWhetherHeard()
{
    auto const answered = [](sd_bus_message*, void* context, sd_bus_error*) {
        auto& self = *static_cast<NotificationStandIn*>(context);
        std::lock_guard const lock(self.mutex());
        --self.m_unheard;
        return 0;
    };
    EXPECT_GE(sd_bus_call_method_async(
                  bus(), nullptr, m_client.c_str(), "/", "org.freedesktop.DBus.Peer", "Ping", answered, this, nullptr),
        0);
}

bool NotificationStandIn::isHeard() const
{
    std::lock_guard const lock(mutex());
    return m_unheard == 0;
}

} // namespace paneweld_tests
