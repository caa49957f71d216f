#include "tests/linux/BusPeer.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>
#include <utility>

namespace paneweld_tests {

BusPeer::BusPeer(std::string busAddress, std::string name, std::uint64_t nameFlags)
    : m_address(std::move(busAddress))
    , m_name(std::move(name))
    , m_nameFlags(nameFlags)
    , m_wakeDescriptor(eventfd(0, EFD_CLOEXEC))
{
}

BusPeer::~BusPeer() { close(m_wakeDescriptor); }

void BusPeer::start()
{
    m_isReady = false;
    m_isEnding = false;
    m_thread = std::thread([this] { run(); });
    m_isReady.wait(false);
}

void BusPeer::stop()
{
    // Some leave before their test ends.
    if (!m_thread.joinable())
        return;
    m_isEnding = true;
    onThread([] {});
    m_thread.join();
}

void BusPeer::run()
{
    sd_bus_new(&m_bus);
    sd_bus_set_address(m_bus, m_address.c_str());
    sd_bus_set_bus_client(m_bus, 1);
    EXPECT_GE(sd_bus_start(m_bus), 0);
    auto const filter = [](sd_bus_message* message, void* context, sd_bus_error*) {
        return sd_bus_message_is_method_call(message, nullptr, nullptr)
            ? static_cast<BusPeer*>(context)->handleCall(message)
            : 0;
    };
    sd_bus_add_filter(m_bus, nullptr, filter, this);
    EXPECT_GE(sd_bus_request_name(m_bus, m_name.c_str(), m_nameFlags), 0);
    m_isReady = true;
    m_isReady.notify_all();
    while (true) {
        while (sd_bus_process(m_bus, nullptr) > 0) { }
        std::vector<std::function<void()>> work;
        {
            std::lock_guard const lock(m_mutex);
            work.swap(m_work);
        }
        for (auto const& piece : work)
            piece();
        if (m_isEnding)
            break;
        pollfd waits[] = { { sd_bus_get_fd(m_bus), static_cast<short>(sd_bus_get_events(m_bus)), 0 },
            { m_wakeDescriptor, POLLIN, 0 } };
        if (work.empty())
            poll(waits, 2, -1);
        std::uint64_t count = 0;
        if (waits[1].revents && read(m_wakeDescriptor, &count, sizeof count) < 0)
            break;
    }
    sd_bus_flush_close_unref(m_bus);
}

void BusPeer::onThread(std::function<void()> work)
{
    {
        std::lock_guard const lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    std::uint64_t const one = 1;
    EXPECT_EQ(write(m_wakeDescriptor, &one, sizeof one), static_cast<ssize_t>(sizeof one));
}

void BusPeer::note(std::string const& call)
{
    std::lock_guard const lock(m_mutex);
    m_calls.push_back(call);
}

std::vector<std::string> BusPeer::calls() const
{
    std::lock_guard const lock(m_mutex);
    return m_calls;
}

int BusPeer::count(std::string const& call) const
{
    auto const all = calls();
    return static_cast<int>(
        std::count_if(all.begin(), all.end(), [&](auto const& made) { return made.starts_with(call); }));
}

} // namespace paneweld_tests
