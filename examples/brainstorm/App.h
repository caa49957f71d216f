#pragma once

#include "examples/brainstorm/Activity.h"
#include "examples/brainstorm/AppWindow.h"
#include "examples/brainstorm/BrainstormPanel.h"
#include "examples/brainstorm/Desktop.h"
#include "examples/brainstorm/Library.h"
#include "examples/brainstorm/Options.h"
#include "examples/brainstorm/Settings.h"

#include <memory>
#include <string>
#include <vector>

namespace ideas {

// The app: what it remembers, its road to the desktop, and its windows. It ends with its last window.
class App {
public:
    explicit App(Options const& options);
    ~App();

    // Opens the first windows and runs until the app quits.
    void run();

private:
    using Activities = std::vector<std::shared_ptr<platform::NSUserActivity>>;

    // What the user asks for by the icon or the shortcut, while any app may be in front.
    Desktop::Requests requests();
    void openFromElsewhere(char const* activityType);
    void openSettingsOrOnboarding();
    void checkForUpdates();
    // Into the panel that is open, or else into a new one.
    void importDropped(std::vector<platform::URL> const& urls);

    // Opens the window that the activities ask for, as a scene of a mobile app is opened. Null when they ask for none.
    HostWindow* open(Activities const& activities);
    HostWindow* open(char const* activityType);
    // One panel a brainstorm; an open one comes to the front.
    HostWindow* openBrainstorm(std::string const& brainstormID);
    // At most one window of the other kinds.
    HostWindow* openSingle(std::string const& kind, std::function<std::unique_ptr<HostWindow>()> const& make);
    std::unique_ptr<HostWindow> makeOnboardingWindow();
    std::unique_ptr<HostWindow> makeAppWindow();

    void settingsDidChange();
    HostWindow* show(std::unique_ptr<HostWindow> window);
    void release(HostWindow const* window);
    AppWindow* appWindow() const;
    void showStatus(std::string const& status) const;

    Options m_options;
    Settings m_settings;
    Library m_library;
    Activity m_activity;
    std::unique_ptr<Desktop> m_desktop;
    std::vector<std::unique_ptr<HostWindow>> m_windows;
};

} // namespace ideas
