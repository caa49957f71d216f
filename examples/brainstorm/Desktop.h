#pragma once

#include "examples/brainstorm/Activity.h"
#include "examples/brainstorm/Gtk.h"
#include "hotkey/KeyCombo.h"
#include "paneweld/glib.hpp"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSStatusBar.h"
#include "platform/foundation/URL.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ideas {

// The app's only road to the desktop plug-in. Without a plug-in, or without an X server, every call is harmless and
// the app goes on with windows as the toolkit makes them.
class Desktop {
public:
    // Starts the library, which must happen before the first window is made.
    Desktop(Activity& activity, bool announcesWindows);
    ~Desktop();
    Desktop(Desktop const&) = delete;
    Desktop& operator=(Desktop const&) = delete;

    bool hasPlugin() const { return m_controller != nullptr; }
    // Why there is no plug-in, in words for the user. Empty when there is one.
    std::string const& problem() const { return m_problem; }
    // The machine's name as its user knows it, or "this computer".
    std::string machineName() const;

    // Call it for a realised window right before it is mapped, its title being an identifier's text.
    void announce(GtkWidget* window);
    // The press is one that the app does not use itself.
    void beginMove(GtkWidget* window, GdkEventButton const& press);
    void setComposing(bool isComposing);

    struct Height {
        double minimum = 0;
        double preferred = 0;
        double maximum = 0;
    };
    void requestHeight(std::string const& windowID, Height const& height, bool isAnimated);
    void setPinned(std::string const& windowID, bool isPinned);

    // The system-wide shortcut for a new brainstorm. Absent: none.
    void setShortcut(std::optional<hotkey::KeyCombo> const& combo, bool isEnabled);
    // While the user types another one, the present one is no more than keys.
    void pauseShortcut(bool isPaused);
    platform::HotKeyTruth shortcutTruth() const;
    // Called when the truth has changed.
    void onShortcutTruth(std::function<void()> handler);
    // Where the app's icon can be seen.
    platform::StatusItemPlace statusItemPlace() const;
    // Called when it is another place.
    void onStatusItemPlace(std::function<void()> handler);
    // Without a user the icon's menu offers to sign in.
    void setHasUser(bool hasUser);

    // The desktop's notifications tell what comes of it. False when nothing would: it is under way, or not to be had.
    bool checkForUpdates();

    // What is checked when a shortcut is chosen.
    void setMainMenu(std::shared_ptr<platform::NSMenu> menu);

    // A key event as a shortcut has it: the position of the key, and what was held with it. Absent for a key that no
    // shortcut can have.
    std::optional<hotkey::KeyCombo> comboOf(GdkEventKey const& event) const;
    platform::NSEventModifierFlags modifiersOf(unsigned state) const;
    // Calls when another window gets the keyboard. The toolkit does not tell of that while it has grabbed the keyboard.
    platform::Observation onKeyboardLost(GtkWidget* window, std::function<void()> handler) const;
    // What is written on the key. Absent where that is no text.
    std::optional<std::string> keyLabel(std::uint32_t keyCode) const;

    // What the plug-in says about one window. Each is optional.
    struct WindowNews {
        std::function<void(std::string const& title)> didLoad {};
        std::function<void(paneweld::BrainstormWindowResize const&)> willResize {};
        std::function<void(paneweld::BrainstormWindowResize const&)> didResize {};
        std::function<void(paneweld::BrainstormWindowDidEndLiveResize const&)> didEndLiveResize {};
    };
    void listen(std::string const& windowID, WindowNews news) { m_news[windowID] = std::move(news); }
    void stopListening(std::string const& windowID) { m_news.erase(windowID); }

    // What the plug-in asks of the app as a whole.
    struct Requests {
        std::function<void()> openBrainstorm {};
        std::function<void()> openMainWindow {};
        std::function<void()> openSettings {};
        std::function<void()> checkForUpdates {};
        std::function<void(std::vector<platform::URL> const&)> importDropped {};
        std::function<void()> quit {};
    };
    void setRequests(Requests requests);

private:
    void start();
    void observe();
    void postShortcut();
    void post(paneweld::NotificationName::Name const& name, platform::Dictionary userInfo);
    WindowNews newsFor(std::string const& windowID) const;

    Activity& m_activity;
    bool m_announcesWindows;
    std::string m_problem;
    std::unique_ptr<paneweld::Host> m_host;
    std::unique_ptr<paneweld::GlibLoop> m_loop;
    std::shared_ptr<platform::NSObject> m_controller;
    std::shared_ptr<platform::NSObject> m_updater;
    std::vector<platform::Observation> m_observations;
    std::map<std::string, WindowNews> m_news;
    Requests m_requests;
    paneweld::UpdateGlobalNewBrainstormShortcut m_shortcut;
    std::optional<platform::Dictionary> m_postedShortcut;
    bool m_isShortcutPaused = false;
};

} // namespace ideas
