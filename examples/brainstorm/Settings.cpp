#include "examples/brainstorm/Settings.h"
#include "examples/brainstorm/KeyFile.h"

namespace ideas {

namespace {

constexpr char const* group = "Ideas";

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
}

void Settings::save() const
{
    KeyFile file;
    for (auto const& entry : entries)
        file.setFlag(group, entry.key, m_values.*entry.value);
    file.save(m_path);
}

} // namespace ideas
