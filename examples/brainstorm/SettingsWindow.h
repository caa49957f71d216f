#pragma once

#include "examples/brainstorm/HostWindow.h"
#include "examples/brainstorm/Settings.h"
#include "examples/brainstorm/ShortcutGroup.h"

namespace ideas {

// The few things that a user may choose, each taking effect at once.
class SettingsWindow : public HostWindow {
public:
    SettingsWindow(Desktop& desktop, Settings& settings, std::function<void()> openOnboarding);
    ~SettingsWindow() override;

private:
    GtkWidget* makeSwitch(char const* title, char const* explanation, bool Settings::Values::*value);
    GtkWidget* makeIconRow();
    void showIconPlace();

    Settings& m_settings;
    ShortcutGroup m_shortcut;
    GtkWidget* m_iconPlace = nullptr;
};

} // namespace ideas
