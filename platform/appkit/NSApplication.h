#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace platform {

class NSMenu;
class NSWindow;

// This process as the window system sees it: its windows and which of them has the keyboard. Main thread only.
class NSApplication {
public:
    NSApplication();
    virtual ~NSApplication();

    // In order of creation, without those that have gone.
    std::vector<std::shared_ptr<NSWindow>> windows() const;
    // Null while another process has the keyboard.
    std::shared_ptr<NSWindow> keyWindow() const { return m_keyWindow; }

    // Brings the process forward when one of its windows is raised next, with the right of the event that led here.
    virtual void activateIgnoringOtherApps(bool ignoringOtherApps) = 0;
    // Ends the process the host's way: its registered handler, else by asking every window to close.
    virtual void terminate() = 0;

    // The app's main menu, which only the app knows. Null until it has told.
    std::shared_ptr<NSMenu> const& mainMenu() const { return m_mainMenu; }
    void setMainMenu(std::shared_ptr<NSMenu> menu) { m_mainMenu = std::move(menu); }

    // For the backend, which sees windows come and go.
    void insertWindow(std::shared_ptr<NSWindow> window);
    void removeWindow(NSWindow const& window);

private:
    friend class NSWindow;
    void setKeyWindow(std::shared_ptr<NSWindow> window) { m_keyWindow = std::move(window); }

    std::vector<std::shared_ptr<NSWindow>> m_windows;
    std::shared_ptr<NSWindow> m_keyWindow;
    std::shared_ptr<NSMenu> m_mainMenu;
};

} // namespace platform
