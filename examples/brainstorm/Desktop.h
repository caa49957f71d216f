#pragma once

#include "examples/brainstorm/Activity.h"
#include "examples/brainstorm/Gtk.h"
#include "paneweld/glib.hpp"

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
        std::function<void()> quit {};
    };
    void setRequests(Requests requests);

private:
    void start();
    void observe();
    void post(paneweld::NotificationName::Name const& name, platform::Dictionary userInfo);
    WindowNews newsFor(std::string const& windowID) const;

    Activity& m_activity;
    bool m_announcesWindows;
    std::string m_problem;
    std::unique_ptr<paneweld::Host> m_host;
    std::unique_ptr<paneweld::GlibLoop> m_loop;
    std::shared_ptr<platform::NSObject> m_controller;
    std::vector<platform::Observation> m_observations;
    std::map<std::string, WindowNews> m_news;
    Requests m_requests;
};

} // namespace ideas
