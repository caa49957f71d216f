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

    // Opens the window that the activities ask for, as a scene of a mobile app is opened.
    void open(Activities const& activities);
    void open(char const* activityType);
    // One panel a brainstorm; an open one comes to the front.
    void openBrainstorm(std::string const& brainstormID);
    // The same when the user asks for it while another app is in front.
    void openBrainstormFromElsewhere();
    // At most one window of the other kinds.
    void openSingle(std::string const& kind, std::function<std::unique_ptr<HostWindow>()> const& make);
    std::unique_ptr<HostWindow> makeAppWindow();

    void settingsDidChange();
    void show(std::unique_ptr<HostWindow> window);
    void release(HostWindow const* window);
    AppWindow* appWindow() const;

    Options m_options;
    Settings m_settings;
    Library m_library;
    Activity m_activity;
    std::unique_ptr<Desktop> m_desktop;
    std::vector<std::unique_ptr<HostWindow>> m_windows;
};

} // namespace ideas
