#include "backends/linux/dbus/Notifications.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/Pump.h"
#include "tests/linux/Screenshot.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/Toolkit.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <systemd/sd-bus.h>
#include <utility>

namespace paneweld_tests {

using backends::Notifications;
using platform::Seconds;
using Lines = std::vector<std::string>;

namespace {

constexpr auto service = "org.freedesktop.Notifications";
constexpr auto freedesktop = "org.freedesktop.DBus";

class NoLog : public platform::LogSink {
public:
    bool accepts(platform::LogLevel) const override { return false; }
    void write(platform::LogRecord const&) override { }
};

// Notices as a desktop draws them, which is started by its bus when there is something to show.
class RealNotices : public testing::Test {
protected:
    RealNotices()
    {
        setenv("HOME", home.path().c_str(), 1);
        for (auto const* name : { "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME" })
            setenv(name, home.path().c_str(), 1);
        setenv("DISPLAY", desktop.display().c_str(), 1);
        setenv("NO_AT_BRIDGE", "1", 1);
        setenv("GSETTINGS_BACKEND", "memory", 1);
        bus.emplace(SessionBus::Services::Installed);
        // No longer than a program takes to be gone.
        notifications.emplace(*loop, bus->address(), "Ideas", "org.example.Ideas",
            platform::OSLog(log, "test", "updates"), Seconds { 0.1 });
    }

    void show()
    {
        Notifications::Notice notice;
        notice.title = "Ideas 2.0 is available";
        notice.actions = { { "install", "Install Update" }, { "later", "Later" }, { "skip", "Skip This Version" },
            { "default", "Release Notes" } };
        notice.isLasting = true;
        notifications->show(notice, [this](auto const& action) { answers.push_back(action); });
    }
    bool pumpUntil(std::function<bool()> const& condition)
    {
        return pump(
            { loop->pollableDescriptor() }, [this] { loop->dispatch(); }, condition);
    }
    static std::optional<xcb_window_t> window()
    {
        auto* const found
            = popen("xdotool search --onlyvisible --class '^Xfce4-notifyd$' 2>/dev/null | tail -n 1", "r");
        std::array<char, 64> line {};
        bool const isThere = std::fgets(line.data(), line.size(), found) != nullptr;
        pclose(found);
        return isThere ? std::optional(static_cast<xcb_window_t>(std::strtoul(line.data(), nullptr, 10)))
                       : std::nullopt;
    }
    // Drawn, and of the size that it stays.
    bool isShown()
    {
        constexpr int coloursOfLetters = 20;
        auto const shown = window();
        auto const place = shown ? toolkit.geometry(*shown) : Geometry {};
        bool const isSame = place.width > 0 && place == std::exchange(m_place, place);
        return isSame && Screenshot(toolkit, place).colours() > coloursOfLetters;
    }
    // The row of buttons is at the bottom; a negative place counts from its right end. What comes before the notice
    // listens is lost, and a person does it again.
    void pressUntilAnswered(int x)
    {
        constexpr int looksBetweenPresses = 20;
        constexpr int fromBottom = 30;
        int looks = 0;
        EXPECT_TRUE(pumpUntil([&] {
            if (answers.empty() && isShown() && looks++ % looksBetweenPresses == 0) {
                toolkit.movePointer(
                    m_place.x + x + (x < 0 ? m_place.width : 0), m_place.y + m_place.height - fromBottom);
                toolkit.button(1, true);
                toolkit.button(1, false);
            }
            return !answers.empty();
        }));
    }
    // The process that shows notices now; 0 for none.
    pid_t server() const
    {
        sd_bus* connection = nullptr;
        sd_bus_open_user(&connection);
        sd_bus_message* answer = nullptr;
        std::uint32_t process = 0;
        if (sd_bus_call_method(connection, freedesktop, "/org/freedesktop/DBus", freedesktop,
                "GetConnectionUnixProcessID", nullptr, &answer, "s", service)
            >= 0)
            sd_bus_message_read(answer, "u", &process);
        sd_bus_message_unref(answer);
        sd_bus_flush_close_unref(connection);
        return static_cast<pid_t>(process);
    }

    platform::TemporaryFolder home;
    Desktop desktop;
    Toolkit toolkit { desktop.display() };
    std::optional<SessionBus> bus;
    std::unique_ptr<backends::EventLoop> loop = backends::EventLoop::create().take();
    NoLog log;
    Lines answers;
    std::optional<Notifications> notifications;

private:
    Geometry m_place {};
};

} // namespace

TEST_F(RealNotices, AnActionIsPressed)
{
    show();
    ASSERT_TRUE(pumpUntil([&] { return isShown(); }));
    Screenshot(toolkit).keep("notice");
    pressUntilAnswered(60);
    EXPECT_EQ(answers, Lines { "install" });
}

TEST_F(RealNotices, AllActionsAreThere)
{
    show();
    ASSERT_TRUE(pumpUntil([&] { return isShown(); }));
    // The desktop of this test draws a button for the default action too.
    pressUntilAnswered(-60);
    EXPECT_EQ(answers, Lines { "default" });
}

TEST_F(RealNotices, ALastingOneComesBackWhenItsProgramHasDied)
{
    show();
    ASSERT_TRUE(pumpUntil([&] { return isShown(); }));
    auto const first = server();
    ASSERT_GT(first, 0);
    ASSERT_EQ(kill(first, SIGKILL), 0);
    ASSERT_TRUE(pumpUntil([&] {
        auto const now = server();
        return now != 0 && now != first && isShown();
    }));
    EXPECT_EQ(answers, Lines {});
    pressUntilAnswered(60);
    EXPECT_EQ(answers, Lines { "install" });
}

} // namespace paneweld_tests
