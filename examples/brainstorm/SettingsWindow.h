#pragma once

#include "examples/brainstorm/HostWindow.h"
#include "examples/brainstorm/Settings.h"

namespace ideas {

// The few things that a user may choose, each a switch that takes effect at once.
class SettingsWindow : public HostWindow {
public:
    SettingsWindow(Desktop& desktop, Settings& settings, std::function<void()> openOnboarding);

private:
    GtkWidget* makeSwitch(char const* title, char const* explanation, bool Settings::Values::*value);

    Settings& m_settings;
};

} // namespace ideas
