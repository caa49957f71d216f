#include "backends/linux/dbus/XfceShortcuts.h"
#include "backends/linux/host/AnsiLayout.h"
#include "backends/linux/host/GnomeShortcuts.h"
#include "backends/linux/host/KdeShortcuts.h"
#include "backends/linux/host/KeySymbols.h"

#include <gtest/gtest.h>

namespace paneweld_tests {

using backends::Accelerator;
using backends::acceleratorFromGtk;
using backends::acceleratorFromQt;

namespace {

// "Control+Shift+Tab", so that a failing test can be read.
std::string written(std::optional<Accelerator> const& accelerator)
{
    if (!accelerator)
        return "none";
    constexpr char const* names[] = { "Shift", "Control", "Alt", "Super", "Hyper", "Meta" };
    std::string text;
    for (auto const modifier : accelerator->modifiers)
        text += std::string(names[static_cast<int>(modifier)]) + "+";
    return text + backends::nameOfKeysym(accelerator->keysym).value_or("?");
}

std::vector<std::string> written(std::vector<backends::DesktopShortcut> const& shortcuts)
{
    std::vector<std::string> lines;
    for (auto const& shortcut : shortcuts)
        lines.push_back(shortcut.action + " = " + written(shortcut.accelerator));
    return lines;
}

using Texts = std::vector<std::string>;

} // namespace

TEST(SystemShortcutsNotation, OfGtkIsRead)
{
    std::pair<char const*, char const*> const examples[] = {
        { "<Primary><Shift>F4", "Shift+Control+F4" },
        { "<Super>x", "Super+x" },
        { "<Super>N", "Super+n" },
        { "<Ctrl><Alt>Delete", "Control+Alt+Delete" },
        { "<ctl><SHFT><mod1>a", "Shift+Control+Alt+a" },
        { "<Mod4>space", "Super+space" },
        { "<Hyper><Meta>1", "Hyper+Meta+1" },
        { "<Super><Super>1", "Super+1" },
        { "<Alt>Above_Tab", "Alt+Above_Tab" },
        { "<Shift>ISO_Left_Tab", "Shift+Tab" },
        { "<Alt>ISO_Left_Tab", "Shift+Alt+Tab" },
        { "<Alt>tab", "Alt+Tab" },
        { "<Super>Prior", "Super+Page_Up" },
        { "<Super>kp_add", "Super+KP_Add" },
        { "<Super>KP_7", "Super+KP_7" },
        { "<Super>eacute", "Super+eacute" },
        { "<Super>Eacute", "Super+eacute" },
        { "<Super>U20AC", "Super+U20AC" },
        { "<Super>U+00E9", "Super+eacute" },
        { "<Super>U+20", "Super+space" },
        { "Print", "Print" },
        { "XF86AudioMute", "XF86AudioMute" },
        { "F35", "F35" },
        { "F36", "none" },
        { "F04", "none" },
        { "", "none" },
        { "disabled", "none" },
        { "<Super>", "none" },
        { "<Super>Super_L", "none" },
        { "<Release><Alt>a", "none" },
        { "<Mod5>a", "none" },
        { "<Super", "none" },
        { "<>a", "none" },
        { "<Super>>", "none" },
        { "a<Super>", "none" },
        { "XF86Mail", "none" },
        { "0x32", "none" },
        { "U", "u" },
        { "U+D800", "none" },
        { "U+110000", "none" },
        { "U+0007", "none" },
        { "U+FFFFFFFFF", "none" },
        { "U+12G4", "none" },
        { "\xff\xfe", "none" },
        { "/org/gnome/custom0/", "none" },
    };
    for (auto const& [text, expected] : examples)
        EXPECT_EQ(written(acceleratorFromGtk(text)), expected) << text;
}

TEST(SystemShortcutsNotation, OfQtIsRead)
{
    std::pair<char const*, char const*> const examples[] = {
        { "Meta+Shift+A", "Shift+Super+a" },
        { "Ctrl+Alt+Del", "Control+Alt+Delete" },
        { "Alt+F4", "Alt+F4" },
        { "Meta++", "Super+plus" },
        { "+", "plus" },
        { "Meta+,", "Super+comma" },
        { "Meta+-", "Super+minus" },
        { "Ctrl+PgUp", "Control+Page_Up" },
        { "ctrl+pgdown", "Control+Page_Down" },
        { "Volume Up", "XF86AudioRaiseVolume" },
        { "Print", "Print" },
        { "Esc", "Escape" },
        { "Left", "Left" },
        { "Backtab", "Shift+Tab" },
        { "Alt+Shift+Backtab", "Shift+Alt+Tab" },
        { "Num+1", "KP_1" },
        { "Ctrl+Num++", "Control+KP_Add" },
        { "Ctrl+Num+Enter", "Control+KP_Enter" },
        { "Return", "Return" },
        { "Meta+\xc3\x89", "Super+eacute" },
        { "Meta+\xe2\x82\xac", "Super+U20AC" },
        { "F35", "F35" },
        { "F36", "none" },
        { "none", "none" },
        { "", "none" },
        { "Meta", "none" },
        { "Meta+", "none" },
        { "Ctrl+K, Ctrl+J", "none" },
        { "Ctrl+K, J", "none" },
        { "Launch Mail", "none" },
        { "Hyper+A", "none" },
        { "Meta+exclam", "none" },
        { "Meta+\xc3", "none" },
        { "++a", "none" },
    };
    for (auto const& [text, expected] : examples)
        EXPECT_EQ(written(acceleratorFromQt(text)), expected) << text;
}

TEST(SystemShortcutsKeySymbols, HaveNamesThatLeadBack)
{
    for (std::uint32_t keysym = 0; keysym <= 0xffff; ++keysym) {
        auto const name = backends::nameOfKeysym(keysym);
        EXPECT_TRUE(!name || backends::keysymNamed(*name) == keysym) << *name;
    }
    EXPECT_EQ(backends::nameOfKeysym(0x6e), "n");
    EXPECT_EQ(backends::nameOfKeysym(0x4e), "N");
    EXPECT_EQ(backends::nameOfKeysym(0xff0d), "Return");
    EXPECT_EQ(backends::nameOfKeysym(0xffbe), "F1");
    EXPECT_EQ(backends::nameOfKeysym(0xffe0), "F35");
    EXPECT_EQ(backends::nameOfKeysym(0xffb9), "KP_9");
    EXPECT_EQ(backends::nameOfKeysym(0x1008ff12), "XF86AudioMute");
    EXPECT_EQ(backends::nameOfKeysym(0x01000430), "U0430");
    EXPECT_EQ(backends::nameOfKeysym(0x0101F600), "U1F600");
    // A character of Latin-1 has no second symbol, and a surrogate none.
    EXPECT_EQ(backends::nameOfKeysym(0x01000041), std::nullopt);
    EXPECT_EQ(backends::nameOfKeysym(0x0100D800), std::nullopt);
    EXPECT_EQ(backends::nameOfKeysym(0), std::nullopt);
    EXPECT_EQ(backends::keysymNamed("quoteleft"), 0x60u);
}

TEST(SystemShortcutsKeySymbols, LieOnAnAnsiKeyboard)
{
    using Codes = std::vector<std::uint16_t>;
    std::pair<char const*, Codes> const examples[] = { { "a", { 0 } }, { "n", { 45 } }, { "grave", { 50 } },
        { "plus", { 24 } }, { "F4", { 118 } }, { "KP_Add", { 69 } }, { "Left", { 123 } }, { "BackSpace", { 51 } },
        { "Delete", { 117 } }, { "XF86AudioRaiseVolume", { 72 } }, { "Print", {} }, { "eacute", {} } };
    for (auto const& [name, codes] : examples)
        EXPECT_EQ(backends::ansiKeyCodes(*backends::keysymNamed(name)), codes) << name;
}

TEST(SystemShortcutsSettings, OfGnomeAreTextsOrNothing)
{
    auto const settings = backends::gnomeSettings("s.one close ['<Alt>F4']\n"
                                                  "s.one two ['<Alt>a', '<Super>b']\n"
                                                  "s.one off @as []\n"
                                                  "s.one blank ['']\n"
                                                  "s.two plain '<Alt>c'\n"
                                                  "s.two name \"It's \\\"mine\\\"\"\n"
                                                  "s.two flag true\n"
                                                  "s.two step 6\n"
                                                  "s.two nested [('a', 'b')]\n"
                                                  "s.two cut ['<Alt>d', '<Alt\n"
                                                  "nonsense\n"
                                                  "s.two more\n"
                                                  "\n"
                                                  "s.two last 'z'");
    using Setting = backends::GnomeSetting;
    std::vector<Setting> const expected
        = { { "s.one", "close", { "<Alt>F4" } }, { "s.one", "two", { "<Alt>a", "<Super>b" } }, { "s.one", "off", {} },
              { "s.one", "blank", { "" } }, { "s.two", "plain", { "<Alt>c" } },
              { "s.two", "name", { "It's \"mine\"" } }, { "s.two", "flag", {} }, { "s.two", "step", {} },
              { "s.two", "nested", {} }, { "s.two", "cut", { "<Alt>d" } }, { "s.two", "last", { "z" } } };
    EXPECT_EQ(settings, expected);
}

TEST(SystemShortcutsSettings, OfKdeAreAlternativesOfActions)
{
    auto const shortcuts = backends::kdeShortcuts("[ActivityManager]\n"
                                                  "_k_friendly_name=Meta+Q\n"
                                                  "[kwin]\n"
                                                  "Window Close=Alt+F4,Alt+F4,Close Window\n"
                                                  "Walk=Meta+Tab\\tAlt+Tab,none,Walk\\\\, then run\r\n"
                                                  "Comma=Meta+\\\\,,none,\n"
                                                  "Off=none,Alt+F1,Off\n"
                                                  "Empty=,,Empty\n"
                                                  "Chords=Ctrl+K\\\\, Ctrl+J,none,Chords\n"
                                                  "Locked[$i] = Meta+L , none,Lock\n"
                                                  "# Comment=Meta+C\n"
                                                  "no line of ours\n"
                                                  "=Meta+E\n"
                                                  "[services][org.kde.krunner.desktop]\n"
                                                  "_launch=Search\\tAlt+Space");
    EXPECT_EQ(written(shortcuts),
        (Texts { "KDE: Close Window = Alt+F4", "KDE: Walk, then run = Super+Tab", "KDE: Walk, then run = Alt+Tab",
            "KDE: Comma = Super+comma", "KDE: Lock = Super+l", "KDE: _launch = Alt+space" }));
}

TEST(SystemShortcutsSettings, OfXfceOverrideTheDefaults)
{
    backends::XfceSettings settings = { { "/commands/default/<Alt>F2", "finder" },
        { "/commands/custom/<Alt>F9", "mine" }, { "/commands/custom/<Alt>F8/startup-notify", true },
        { "/commands/custom/<Alt>F7", "" }, { "/xfwm4/default/<Alt>F4", "close_window_key" },
        { "/xfwm4/custom/<Alt>F5", "maximize_window_key" }, { "/xfwm4/custom/override", true }, { "/providers", "x" },
        { "commands/custom/<Alt>F3", "x" }, { "/commands", "x" }, { "", "x" }, { "/a/b/", "x" } };
    EXPECT_EQ(written(backends::xfceShortcuts(settings)),
        (Texts { "Xfce: finder = Alt+F2", "Xfce: mine = Alt+F9", "Xfce: maximize_window_key = Alt+F5" }));
    settings.emplace_back("/commands/custom/override", true);
    EXPECT_EQ(written(backends::xfceShortcuts(settings)),
        (Texts { "Xfce: mine = Alt+F9", "Xfce: maximize_window_key = Alt+F5" }));
}

} // namespace paneweld_tests
