#pragma once

#include <functional>
#include <string>

namespace ideas {

// What the user chose, kept in a key file in the user's configuration folder. Every change is written at once.
class Settings {
public:
    Settings();

    struct Values {
        bool animatesHeight = true;
        bool pinsNewPanels = false;
        bool opensPanelAtStart = true;
        bool usesDarkAppearance = false;
        bool hasSeenOnboarding = false;
    };

    Values const& values() const { return m_values; }
    void change(std::function<void(Values&)> const& change);

    // Called after each change.
    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    void load();
    void save() const;

    std::string m_path;
    Values m_values;
    std::function<void()> m_listener;
};

} // namespace ideas
