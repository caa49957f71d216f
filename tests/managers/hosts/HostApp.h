#pragma once

#include "paneweld/host.hpp"

#include "platform/foundation/NotificationCenter.h"
#include "platform/runtime/NSObject.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// An app as a stranger writes it: windows of some toolkit, and the plug-in through the public host header alone. What
// it does it is told on its standard input, a line each, and what it hears it writes on its standard output:
//
//   open found|announced ID WIDTH HEIGHT TITLE    ->  opened ID XID
//   height ID POINTS animated|plain               ->  will ID POINTS, did ID POINTS
//   pin ID yes|no
//   show ID, hide ID, destroy ID
//   shortcut KEYCODE MODIFIERS ID                 ->  triggered (and the window is shown)
//   statusitem ID                                 ->  clicked (and the window is shown)
//
// By themselves come "loaded ID", "closed ID" when the window was asked to close and went, and "key ID" for a key that
// reached the toolkit.

// A window of the toolkit: made and not shown.
class HostWindow {
public:
    virtual ~HostWindow() = default;
    // Its X window, which the toolkit makes now if it waits with that; the toolkit's connection is flushed.
    virtual std::uint32_t realize() = 0;
    virtual void show() = 0;
    virtual void hide() = 0;
};

struct WindowWish {
    int width = 0;
    int height = 0;
    std::string title {};
    // The user or somebody else asked for it. The window is destroyed afterwards.
    std::function<void()> askedToClose {};
    std::function<void()> gotKey {};
};

class HostApp {
public:
    using Make = std::function<std::unique_ptr<HostWindow>(WindowWish wish)>;

    // The program's arguments: the folder of the framework. Ends the process with a reason when it cannot start.
    HostApp(int argc, char** argv, Make make);

    paneweld::Host& host() { return *m_host; }
    // What has come in on the standard input, without waiting. False when there will be no more: the program ends then.
    bool readCommands();
    // Says "opened" once more for each window whose X window is another by now.
    void tellWindows();
    // Windows that were asked to close go now, outside the toolkit's own call.
    void destroyClosed();
    static void say(std::string const& line);

private:
    void obey(std::string const& line);
    void open(std::string const& road, std::string const& id, WindowWish wish);
    void listen();
    void show(std::string const& id);

    Make m_make;
    std::unique_ptr<paneweld::Host> m_host;
    std::shared_ptr<platform::NSObject> m_controller;
    std::vector<std::shared_ptr<platform::ObservationToken>> m_observations;
    std::map<std::string, std::unique_ptr<HostWindow>> m_windows;
    std::map<std::string, std::uint32_t> m_told;
    std::vector<std::string> m_closed;
    std::string m_input;
    std::string m_windowOfShortcut;
    std::string m_windowOfStatusItem;
};
