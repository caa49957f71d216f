#include "backends/linux/SystemShortcuts.h"

#include "backends/linux/dbus/XfceShortcuts.h"
#include "backends/linux/host/ProgramOutput.h"
#include "platform/carbon/EventHotKeys.h"
#include "platform/foundation/Dictionary.h"
#include "tests/linux/SessionBus.h"
#include "tests/support/CollectedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace paneweld_tests {

using backends::outputOfProgram;
using backends::SystemShortcuts;
using platform::ModifierKey;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto patience = 30s;

using Texts = std::vector<std::string>;

} // namespace

class SystemShortcutsTest : public ::testing::Test {
protected:
    SystemShortcutsTest()
    {
        // Nothing of the machine's own user counts.
        for (auto const* name : { "DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP" })
            unsetenv(name);
        setenv("HOME", folder.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (folder.path() + "/config").c_str(), 1);
        setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
        setenv("GSETTINGS_BACKEND", "keyfile", 1);
    }

    void isOn(std::string const& desktop) { setenv("XDG_CURRENT_DESKTOP", desktop.c_str(), 1); }
    // A program of this name goes before the system's.
    void replaceProgram(std::string const& name, std::string const& script)
    {
        auto const path = folder.write("bin/" + name, "#!/bin/sh\n" + script);
        ASSERT_EQ(chmod(path.c_str(), 0755), 0);
        setenv("PATH", (folder.path() + "/bin:" + std::getenv("PATH")).c_str(), 1);
    }
    // In no hurry: what is read counts, and not how busy the machine is.
    SystemShortcuts shortcuts(SystemShortcuts::Layout layout = {}, platform::HotKeyModifierKeys modifiers = {})
    {
        return { modifiers, std::move(layout), platform::OSLog(log, "s", "c"), patience };
    }
    // "1100/49" for control, command and space.
    static Texts combinations(SystemShortcuts shortcuts)
    {
        auto const copied = shortcuts.copySymbolicHotKeys();
        EXPECT_EQ(copied.status, platform::noErr);
        Texts lines;
        for (auto const& value : copied.array.value_or(platform::List())) {
            auto const& entry = *value.asDictionary();
            EXPECT_EQ(*entry.value(platform::kHISymbolicHotKeyEnabled), platform::Value(true));
            std::array<char, 32> text {};
            std::snprintf(text.data(), text.size(), "%x/%u",
                *entry.value(platform::kHISymbolicHotKeyModifiers)->asUInt32(),
                *entry.value(platform::kHISymbolicHotKeyCode)->asUInt32());
            lines.emplace_back(text.data());
        }
        return lines;
    }
    static bool has(Texts const& texts, std::string const& text)
    {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    }
    static void run(Texts arguments)
    {
        auto const output = outputOfProgram(std::move(arguments), Clock::now() + patience);
        EXPECT_TRUE(output) << output.error().localizedDescription;
    }
    // With the services that it starts.
    void startBus() { bus = std::make_unique<SessionBus>(SessionBus::Services::Installed); }
    static bool hasNoChild() { return waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD; }

    platform::TemporaryFolder folder;
    CollectedLog log;
    std::unique_ptr<SessionBus> bus;
};

TEST_F(SystemShortcutsTest, AreUnknownOnOtherDesktops)
{
    for (auto const* desktop : { "", "sway", "LXQt:wlroots" }) {
        isOn(desktop);
        auto const copied = shortcuts().copySymbolicHotKeys();
        EXPECT_EQ(copied.status, platform::unimpErr) << desktop;
        EXPECT_FALSE(copied.array) << desktop;
        EXPECT_EQ(shortcuts().holderOf(118, platform::optionKey), std::nullopt);
    }
    unsetenv("XDG_CURRENT_DESKTOP");
    EXPECT_EQ(shortcuts().copySymbolicHotKeys().status, platform::unimpErr);
}

TEST_F(SystemShortcutsTest, ComeFromTheFileOfKde)
{
    isOn("KDE");
    EXPECT_TRUE(combinations(shortcuts()).empty());
    EXPECT_EQ(log.messages.size(), 1u);
    folder.write("config/kglobalshortcutsrc",
        "[kwin]\nWindow Close=Alt+F4,Alt+F4,Close Window\nFind=Ctrl+Meta+F\\tPrint,none,Find\n");
    EXPECT_EQ(combinations(shortcuts()), (Texts { "800/118", "1100/3" }));
    EXPECT_EQ(shortcuts().holderOf(3, platform::controlKey | platform::cmdKey), "KDE: Find");
    EXPECT_EQ(shortcuts().holderOf(3, platform::cmdKey), std::nullopt);
    // Without a folder of its own for settings.
    unsetenv("XDG_CONFIG_HOME");
    folder.write(".config/kglobalshortcutsrc", "[kwin]\nA=Meta+A,none,A\n");
    EXPECT_EQ(combinations(shortcuts()), (Texts { "100/0" }));
}

TEST_F(SystemShortcutsTest, FollowTheLayoutAndTheChosenModifiers)
{
    isOn("KDE");
    folder.write("config/kglobalshortcutsrc", "[k]\nOne=Meta+A\nTwo=Alt+B\nThree=Ctrl+Shift+C\n");
    auto const layout = [](std::uint32_t keysym) {
        return keysym == 'a' ? std::vector<std::uint16_t> { 12, 10 } : std::vector<std::uint16_t>();
    };
    // A key that writes the letter twice counts twice; what the layout does not know lies as on an ANSI keyboard.
    EXPECT_EQ(combinations(shortcuts(layout)), (Texts { "100/12", "100/10", "800/11", "1200/8" }));
    platform::HotKeyModifierKeys const swapped { ModifierKey::Control, ModifierKey::Super, ModifierKey::Hyper };
    // With Control as command, and no modifier that is Alt.
    EXPECT_EQ(combinations(shortcuts({}, swapped)), (Texts { "800/0", "300/8" }));
}

TEST_F(SystemShortcutsTest, ComeFromTheSettingsOfGnome)
{
    run({ "gsettings", "set", "org.gnome.desktop.wm.keybindings", "close", "['<Super>q', '<Alt>F4']" });
    for (auto const* desktop : { "ubuntu:GNOME", "Budgie:GNOME", "pantheon", "Unity" }) {
        isOn(desktop);
        auto const found = combinations(shortcuts());
        EXPECT_TRUE(has(found, "100/12")) << desktop;
        EXPECT_TRUE(has(found, "800/118")) << desktop;
    }
    isOn("GNOME");
    EXPECT_EQ(shortcuts().holderOf(12, platform::cmdKey), "GNOME: close");
    run({ "gsettings", "set", "org.gnome.desktop.wm.keybindings", "close", "[]" });
    EXPECT_FALSE(has(combinations(shortcuts()), "100/12"));
}

TEST_F(SystemShortcutsTest, IncludeTheUsersOwnOfGnomeAndCinnamon)
{
    auto const entry = [](std::string const& id, std::string const& binding) {
        return "<schema id='" + id + "'><key name='name' type='s'><default>''</default></key>"
            + "<key name='command' type='s'><default>'F1'</default></key>" + binding + "</schema>";
    };
    std::string const media = "org.gnome.settings-daemon.plugins.media-keys";
    std::string const cinnamon = "org.cinnamon.desktop.keybindings";
    folder.write("schemas/test.gschema.xml",
        "<schemalist><schema id='" + media + "' path='/m/'>"
            + "<key name='custom-keybindings' type='as'><default>[]</default></key>"
              "<key name='volume-step' type='i'><default>6</default></key>"
              "<key name='volume-up-static' type='as'><default>['XF86AudioRaiseVolume']</default></key></schema>"
            + entry(media + ".custom-keybinding", "<key name='binding' type='s'><default>''</default></key>")
            + "<schema id='" + cinnamon + "' path='/c/'>"
            + "<key name='custom-list' type='as'><default>[]</default></key></schema>"
            + entry(cinnamon + ".custom-keybinding", "<key name='binding' type='as'><default>[]</default></key>")
            + "</schemalist>");
    run({ "glib-compile-schemas", folder.path() + "/schemas" });
    setenv("GSETTINGS_SCHEMA_DIR", (folder.path() + "/schemas").c_str(), 1);
    run({ "gsettings", "set", media, "custom-keybindings", "['/mine/0/', 'no path']" });
    run({ "gsettings", "set", media + ".custom-keybinding:/mine/0/", "name", "It's mine" });
    run({ "gsettings", "set", media + ".custom-keybinding:/mine/0/", "binding", "<Primary><Super>t" });
    isOn("GNOME");
    EXPECT_EQ(shortcuts().holderOf(17, platform::controlKey | platform::cmdKey), "GNOME: It's mine");
    EXPECT_EQ(shortcuts().holderOf(72, 0), "GNOME: volume-up-static");
    // The command is no shortcut, whatever it looks like.
    EXPECT_EQ(shortcuts().holderOf(122, 0), std::nullopt);

    auto const place = ".custom-keybinding:/org/cinnamon/desktop/keybindings/custom-keybindings/custom0/";
    run({ "gsettings", "set", cinnamon, "custom-list", "['custom0']" });
    run({ "gsettings", "set", cinnamon + place, "binding", "['<Super>y', '<Super>z']" });
    isOn("X-Cinnamon");
    EXPECT_EQ(combinations(shortcuts()), (Texts { "100/16", "100/6" }));
    EXPECT_EQ(shortcuts().holderOf(6, platform::cmdKey), "Cinnamon: custom0");
}

TEST_F(SystemShortcutsTest, AreNoneWhereTheProgramIsMissing)
{
    isOn("MATE");
    setenv("PATH", folder.path().c_str(), 1);
    EXPECT_TRUE(combinations(shortcuts()).empty());
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_NE(log.messages[0].find("gsettings"), std::string::npos);
    EXPECT_TRUE(hasNoChild());
}

TEST_F(SystemShortcutsTest, DoNotWaitForAProgramThatHangs)
{
    isOn("GNOME");
    replaceProgram("gsettings", "echo \"$2 close ['<Alt>F4']\"\nexec tail -f /dev/null\n");
    auto const start = Clock::now();
    EXPECT_TRUE(combinations({ {}, {}, platform::OSLog(log, "s", "c") }).empty());
    EXPECT_LT(Clock::now() - start, patience);
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_TRUE(hasNoChild());
}

TEST_F(SystemShortcutsTest, CanBeReadFromManyThreads)
{
    isOn("GNOME");
    replaceProgram("gsettings", "echo \"$2 close ['<Alt>F4']\"\n");
    auto const once = combinations(shortcuts());
    EXPECT_EQ(once, Texts(5, "800/118"));
    auto system = shortcuts();
    std::array<std::size_t, 4> counts {};
    std::vector<std::thread> threads;
    for (auto& count : counts)
        threads.emplace_back([&] { count = system.copySymbolicHotKeys().array.value_or(platform::List()).size(); });
    for (auto& thread : threads)
        thread.join();
    for (auto const count : counts)
        EXPECT_EQ(count, once.size());
    EXPECT_TRUE(hasNoChild());
}

TEST_F(SystemShortcutsTest, ComeFromTheServiceOfXfce)
{
    startBus();
    isOn("XFCE");
    Texts const set = { "xfconf-query", "-c", "xfce4-keyboard-shortcuts", "-n" };
    auto const with = [&](Texts more) {
        auto all = set;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    run(with({ "-t", "string", "-p", "/commands/custom/<Super><Shift>F9", "-s", "foo" }));
    run(with({ "-t", "string", "-p", "/xfwm4/default/<Super>a", "-s", "fill_window_key" }));
    run(with({ "-t", "int", "-p", "/xfwm4/custom/<Super>b", "-s", "5" }));
    auto const found = combinations(shortcuts());
    EXPECT_TRUE(has(found, "300/101"));
    EXPECT_TRUE(has(found, "100/0"));
    EXPECT_FALSE(has(found, "100/11"));
    EXPECT_EQ(shortcuts().holderOf(101, platform::cmdKey | platform::shiftKey), "Xfce: foo");
    run(with({ "-t", "bool", "-p", "/xfwm4/custom/override", "-s", "true" }));
    EXPECT_FALSE(has(combinations(shortcuts()), "100/0"));
    EXPECT_TRUE(log.messages.empty());
}

TEST_F(SystemShortcutsTest, StartNoServiceOfXfce)
{
    startBus();
    isOn("XFCE");
    EXPECT_TRUE(combinations(shortcuts()).empty());
    EXPECT_EQ(log.messages.size(), 1u);
    auto const answer = outputOfProgram({ "dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/",
                                            "org.freedesktop.DBus.NameHasOwner", "string:org.xfce.Xfconf" },
        Clock::now() + patience);
    ASSERT_TRUE(answer);
    EXPECT_NE(answer.value().find("boolean false"), std::string::npos);
}

TEST_F(SystemShortcutsTest, DoNotWaitForABusThatIsSilent)
{
    // It lets everybody in and says nothing.
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    auto const path = folder.path() + "/bus";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    int const listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 5), 0);
    auto const start = Clock::now();
    auto const settings = backends::readXfceSettings(start + 200ms);
    ASSERT_FALSE(settings);
    EXPECT_EQ(settings.error().code, ETIMEDOUT);
    EXPECT_LT(Clock::now() - start, patience);
    close(listener);
    // And for none at all.
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder.path() + "/nowhere").c_str(), 1);
    EXPECT_FALSE(backends::readXfceSettings(Clock::now() + patience));
}

} // namespace paneweld_tests
