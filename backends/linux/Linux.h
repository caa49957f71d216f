#pragma once

#include "platform/Platform.h"
#include "platform/appkit/NSEventModifierFlags.h"
#include "platform/carbon/HotKeyTruth.h"
#include "platform/dispatch/Clock.h"
#include "platform/foundation/Result.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace backends {

// What a host may choose about its life on Linux.
struct LinuxOptions {
    // The X display, as in DISPLAY. Absent: DISPLAY itself. Without a server there are no windows, and all else works.
    std::optional<std::string> display {};
    // The folder that counts as the host's main bundle, and the identifier of the app. Absent: the folder of the
    // executable, and none.
    std::optional<std::string> mainBundlePath {};
    std::optional<std::string> bundleIdentifier {};
    // Which keys of this keyboard stand for the modifiers of hot keys. Fails when one key stands for two.
    platform::HotKeyModifierKeys hotKeyModifiers {};
    // The app's name for people, where the desktop shows one. Absent: the last part of the identifier.
    std::optional<std::string> appName {};
    // What a desktop that binds shortcuts itself tells the user of ours, in the user's language.
    std::string hotKeyDescription {};
    // How long a handler of a script may take before it is ended, and its call with it.
    platform::Seconds scriptTime { 120 };
};

enum class WindowReach {
    X11, // every window of this process that the X server shows
    XWayland, // the same, in a Wayland session: native Wayland windows are out of reach
    Unreachable, // no X server: no windows at all
};

// The world of a Linux desktop. Beside the services of every platform it has what exists only here. Main thread only.
class LinuxPlatform : public platform::Platform {
public:
    // The one descriptor to wait for (readable), valid for the life of the process, and what to do then: dispatch
    // runs everything that is due and never blocks.
    virtual int pollableDescriptor() const = 0;
    virtual void dispatch() = 0;

    virtual WindowReach windowReach() const = 0;

    // Before the host maps a window: recognises, styles and places it, so that it cannot be seen otherwise. The host
    // has flushed its own connection. One round trip. False when the X server does not know the window as a
    // top-level of this process.
    virtual bool announceX11Window(std::uint32_t xid) = 0;
    // Null when it is not a known window of this process.
    virtual std::shared_ptr<platform::NSWindow> adoptX11Window(std::uint32_t xid) = 0;
    // Absent for a window that is not one of X, or has gone.
    virtual std::optional<std::uint32_t> x11Window(platform::NSWindow const& window) const = 0;

    // Lets the window manager move the window along with the pointer, from a press that the host just got: its
    // button and the pointer's place on the root, in pixels. Only for windows that are movable by their background.
    virtual bool beginMove(std::uint32_t xid, int rootX, int rootY, int button) = 0;

    // The keyboard of the X server, for a host that reads its own key events: the virtual key code of a keycode, what
    // the user's layout writes on a key, and which of the modifiers of hot keys the state of an event holds. Absent for
    // what this keyboard has not, and without a server.
    virtual std::optional<std::uint32_t> virtualKeyCode(std::uint32_t x11Keycode) const = 0;
    virtual std::optional<std::string> keyLabel(std::uint32_t virtualKeyCode) const = 0;
    virtual platform::NSEventModifierFlags hotKeyModifiers(std::uint32_t x11State) const = 0;

    // While the host composes text with an input method, keys of interest go to it and not to monitors.
    virtual void setComposingText(bool isComposing) = 0;

    // One turn of the host's own loop, for waits inside a call (the folder dialog). Without one only our side runs
    // then, and the host's windows stand still.
    virtual void setNestedIteration(std::function<void()> iterate) = 0;
    virtual bool hasNestedIteration() const = 0;

    // What terminate: does. Empty: ask all windows to close, then exit.
    virtual void setTerminateHandler(std::function<void()> handler) = 0;
};

platform::Result<std::unique_ptr<LinuxPlatform>> makeLinuxPlatform(LinuxOptions options);

} // namespace backends
