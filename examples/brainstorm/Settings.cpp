#include "examples/brainstorm/Settings.h"
#include "examples/brainstorm/KeyFile.h"

#include <algorithm>

namespace ideas {

namespace {

constexpr char const* group = "Ideas";
// What the plug-in is told, under its own names.
constexpr char const* shortcutGroup = "Shortcut";
constexpr char const* keyCodeKey = "keyCode";
constexpr char const* modifiersKey = "modifiers";
constexpr char const* isEnabledKey = "isEnabled";

struct Entry {
    char const* key;
    bool Settings::Values::*value;
};

constexpr Entry entries[] = {
    { "AnimateHeight", &Settings::Values::animatesHeight },
    { "PinNewPanels", &Settings::Values::pinsNewPanels },
    { "OpenPanelAtStart", &Settings::Values::opensPanelAtStart },
    { "DarkAppearance", &Settings::Values::usesDarkAppearance },
    { "OnboardingSeen", &Settings::Values::hasSeenOnboarding },
};

} // namespace

Settings::Settings()
    : m_path(std::string(g_get_user_config_dir()) + "/ideas/settings.ini")
{
    load();
}

hotkey::KeyCombo Settings::defaultShortcut()
{
    using platform::NSEventModifierFlags;
    return { hotkey::Key::n, NSEventModifierFlags::control | NSEventModifierFlags::option };
}

void Settings::change(std::function<void(Values&)> const& change)
{
    change(m_values);
    save();
    if (m_listener)
        m_listener();
}

void Settings::load()
{
    KeyFile file;
    file.load(m_path);
    for (auto const& entry : entries)
        m_values.*entry.value = file.flag(group, entry.key, m_values.*entry.value);
    loadShortcut(file);
}

void Settings::loadShortcut(KeyFile const& file)
{
    auto const groups = file.groups();
    if (std::find(groups.begin(), groups.end(), shortcutGroup) == groups.end())
        return;
    // Anybody may have written into the file: only numbers that fit are made a combination of.
    platform::Dictionary dictionary;
    for (auto const* const key : { keyCodeKey, modifiersKey }) {
        if (auto const number = file.unsignedNumber(shortcutGroup, key))
            dictionary[key] = std::int64_t { *number };
    }
    m_values.shortcut = hotkey::KeyCombo::fromDictionary(dictionary);
    m_values.isShortcutEnabled = m_values.shortcut && file.flag(shortcutGroup, isEnabledKey, true);
}

void Settings::save() const
{
    KeyFile file;
    for (auto const& entry : entries)
        file.setFlag(group, entry.key, m_values.*entry.value);
    for (auto const& [key, value] : m_values.shortcut ? m_values.shortcut->dictionary() : platform::Dictionary {})
        file.setNumber(shortcutGroup, std::string(key).c_str(), value.asInt().value_or(0));
    file.setFlag(shortcutGroup, isEnabledKey, m_values.isShortcutEnabled);
    file.save(m_path);
}

} // namespace ideas
