#pragma once

#include "hotkey/KeyCombo.h"

#include <functional>
#include <optional>
#include <string>

namespace ideas {

class KeyFile;

// What the user chose, kept in a key file in the user's configuration folder. Every change is written at once.
class Settings {
public:
    Settings();

    // One that hardly any desktop or program uses.
    static hotkey::KeyCombo defaultShortcut();

    struct Values {
        bool animatesHeight = true;
        bool pinsNewPanels = false;
        bool opensPanelAtStart = true;
        bool usesDarkAppearance = false;
        bool hasSeenOnboarding = false;

        // Opens a new brainstorm, whatever app is in front. Absent when the user wants none.
        std::optional<hotkey::KeyCombo> shortcut = defaultShortcut();
        bool isShortcutEnabled = true;
    };

    Values const& values() const { return m_values; }
    void change(std::function<void(Values&)> const& change);

    // Called after each change.
    void onChange(std::function<void()> listener) { m_listener = std::move(listener); }

private:
    void load();
    void loadShortcut(KeyFile const& file);
    void save() const;

    std::string m_path;
    Values m_values;
    std::function<void()> m_listener;
};

} // namespace ideas
