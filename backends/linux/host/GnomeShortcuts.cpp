#include "backends/linux/host/GnomeShortcuts.h"

#include "backends/linux/host/ProgramOutput.h"
#include "platform/foundation/Text.h"

#include <algorithm>
#include <cerrno>
#include <optional>

namespace backends {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view gnomeSchemas[] = {
    "org.gnome.desktop.wm.keybindings",
    "org.gnome.mutter.keybindings",
    "org.gnome.mutter.wayland.keybindings",
    "org.gnome.shell.keybindings",
    "org.gnome.settings-daemon.plugins.media-keys",
};
constexpr std::string_view unitySchemas[] = {
    "org.gnome.desktop.wm.keybindings",
    "org.gnome.settings-daemon.plugins.media-keys",
    "com.canonical.unity.settings-daemon.plugins.media-keys",
    "org.compiz.integrated",
    "org.compiz.unityshell:/org/compiz/profiles/unity/plugins/unityshell/",
};
constexpr std::string_view budgieSchemas[] = {
    "org.gnome.desktop.wm.keybindings",
    "org.gnome.mutter.keybindings",
    "org.gnome.settings-daemon.plugins.media-keys",
    "com.solus-project.budgie-wm",
};
constexpr std::string_view pantheonSchemas[] = {
    "org.gnome.desktop.wm.keybindings",
    "org.gnome.mutter.keybindings",
    "org.gnome.settings-daemon.plugins.media-keys",
    "org.pantheon.desktop.gala.keybindings",
    "io.elementary.desktop.wm.keybindings",
};
constexpr std::string_view cinnamonSchemas[] = {
    "org.cinnamon.desktop.keybindings",
    "org.cinnamon.desktop.keybindings.wm",
    "org.cinnamon.desktop.keybindings.media-keys",
    "org.cinnamon.muffin.keybindings",
};
constexpr std::string_view mateSchemas[] = {
    "org.mate.Marco.global-keybindings",
    "org.mate.Marco.window-keybindings",
    "org.mate.SettingsDaemon.plugins.media-keys",
};

constexpr std::string_view gnomeMediaKeys = "org.gnome.settings-daemon.plugins.media-keys";
constexpr std::string_view gnomeCustom = "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding";
constexpr std::string_view cinnamonCustom = "org.cinnamon.desktop.keybindings.custom-keybinding";
constexpr std::string_view cinnamonFolder = "/org/cinnamon/desktop/keybindings/custom-keybindings/";

constexpr GnomeDesktop desktops[] = {
    { "gnome", "GNOME", gnomeSchemas, gnomeMediaKeys, "custom-keybindings", gnomeCustom },
    { "gnome-classic", "GNOME", gnomeSchemas, gnomeMediaKeys, "custom-keybindings", gnomeCustom },
    { "gnome-flashback", "GNOME", gnomeSchemas, gnomeMediaKeys, "custom-keybindings", gnomeCustom },
    { "unity", "Unity", unitySchemas, gnomeMediaKeys, "custom-keybindings", gnomeCustom },
    { "budgie", "Budgie", budgieSchemas, gnomeMediaKeys, "custom-keybindings", gnomeCustom },
    { "pantheon", "Pantheon", pantheonSchemas, gnomeMediaKeys, "custom-keybindings", gnomeCustom },
    { "x-cinnamon", "Cinnamon", cinnamonSchemas, cinnamonSchemas[0], "custom-list", cinnamonCustom, cinnamonFolder },
    { "cinnamon", "Cinnamon", cinnamonSchemas, cinnamonSchemas[0], "custom-list", cinnamonCustom, cinnamonFolder },
    { "mate", "MATE", mateSchemas },
};

// The text that starts with this quotation mark, and what stands behind it. Absent when it does not end.
std::optional<std::string> takeText(std::string_view& value)
{
    char const mark = value[0];
    std::string text;
    for (std::size_t i = 1; i < value.size(); ++i) {
        if (value[i] == mark) {
            value.remove_prefix(i + 1);
            return text;
        }
        // Escapes for characters that no shortcut needs stay as they are.
        bool const isEscape = value[i] == '\\' && i + 1 < value.size();
        if (isEscape && (value[i + 1] == '\\' || value[i + 1] == '\'' || value[i + 1] == '"'))
            ++i;
        text += value[i];
    }
    return std::nullopt;
}

bool startsText(std::string_view value) { return value.starts_with('\'') || value.starts_with('"'); }

// 'a', "it's", ['a', 'b'], @as []. Numbers, booleans and anything nested hold no text of ours.
std::vector<std::string> textsOf(std::string_view value)
{
    std::vector<std::string> texts;
    bool const isList = value.starts_with('[');
    if (isList)
        value.remove_prefix(1);
    while (startsText(value)) {
        auto text = takeText(value);
        if (!text)
            break;
        texts.push_back(std::move(*text));
        if (!isList || !value.starts_with(", "))
            break;
        value.remove_prefix(2);
    }
    return texts;
}

std::vector<std::string> textsOf(std::vector<GnomeSetting> const& settings, std::string_view key)
{
    for (auto const& setting : settings) {
        if (setting.key == key)
            return setting.texts;
    }
    return {};
}

void append(std::vector<DesktopShortcut>& shortcuts, std::string const& action, std::vector<std::string> const& texts)
{
    for (auto const& text : texts) {
        if (auto accelerator = acceleratorFromGtk(text))
            shortcuts.push_back({ action, std::move(*accelerator) });
    }
}

class Reader {
public:
    Reader(GnomeDesktop const& desktop, Clock::time_point deadline, platform::OSLog const& log)
        : m_desktop(desktop)
        , m_deadline(deadline)
        , m_log(log)
    {
    }

    std::vector<DesktopShortcut> read()
    {
        for (auto const schema : m_desktop.schemas) {
            auto const settings = settingsOf(std::string(schema));
            for (auto const& setting : settings)
                append(m_shortcuts, actionNamed(setting.key), setting.texts);
            if (!m_desktop.customKey.empty() && schema == m_desktop.customSchema)
                readCustom(textsOf(settings, m_desktop.customKey));
        }
        return std::move(m_shortcuts);
    }

private:
    void readCustom(std::vector<std::string> const& places)
    {
        for (auto const& place : places) {
            bool const isPath = place.starts_with('/');
            if (place.empty() || (!isPath && m_desktop.customFolder.empty()))
                continue;
            auto const path = isPath ? place : std::string(m_desktop.customFolder) + place + "/";
            auto const settings = settingsOf(std::string(m_desktop.customEntrySchema) + ":" + path);
            auto const names = textsOf(settings, "name");
            bool const hasName = !names.empty() && !names.front().empty();
            append(m_shortcuts, actionNamed(hasName ? names.front() : place), textsOf(settings, "binding"));
        }
    }

    std::vector<GnomeSetting> settingsOf(std::string const& schema)
    {
        if (m_hasGivenUp)
            return {};
        auto const output = outputOfProgram({ "gsettings", "list-recursively", schema }, m_deadline);
        if (output)
            return gnomeSettings(output.value());
        auto const& cause = output.error();
        // A schema that this version of the desktop does not have says nothing of the next one.
        m_hasGivenUp = cause.code == ENOENT || cause.code == EACCES || cause.code == ETIMEDOUT;
        if (m_hasGivenUp)
            m_log.error("cannot read the desktop's shortcuts: %{public}s", { cause.localizedDescription });
        else
            m_log.info("no shortcuts from the desktop: %{public}s", { cause.localizedDescription });
        return {};
    }

    std::string actionNamed(std::string const& key) const { return std::string(m_desktop.name) + ": " + key; }

    GnomeDesktop const& m_desktop;
    Clock::time_point m_deadline;
    platform::OSLog const& m_log;
    std::vector<DesktopShortcut> m_shortcuts;
    bool m_hasGivenUp = false;
};

} // namespace

std::vector<GnomeSetting> gnomeSettings(std::string_view output)
{
    std::vector<GnomeSetting> settings;
    while (!output.empty()) {
        auto const line = output.substr(0, output.find('\n'));
        output.remove_prefix(std::min(line.size() + 1, output.size()));
        auto const schemaEnd = line.find(' ');
        if (schemaEnd == std::string_view::npos)
            continue;
        auto const keyEnd = line.find(' ', schemaEnd + 1);
        if (keyEnd == std::string_view::npos)
            continue;
        auto const key = line.substr(schemaEnd + 1, keyEnd - schemaEnd - 1);
        settings.push_back(
            { std::string(line.substr(0, schemaEnd)), std::string(key), textsOf(line.substr(keyEnd + 1)) });
    }
    return settings;
}

GnomeDesktop const* gnomeDesktop(std::string_view identifier)
{
    auto const lower = platform::asciiLowerCase(identifier);
    for (auto const& desktop : desktops) {
        if (desktop.identifier == lower)
            return &desktop;
    }
    return nullptr;
}

std::vector<DesktopShortcut> readGnomeShortcuts(
    GnomeDesktop const& desktop, Clock::time_point deadline, platform::OSLog const& log)
{
    return Reader(desktop, deadline, log).read();
}

} // namespace backends
