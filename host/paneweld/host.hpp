#pragma once

#include "iOS/NSBundle+Paneweld.h"
#include "iOS/NSUserActivity+Paneweld.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "platform/appkit/NSEventModifierFlags.h"
#include "platform/appkit/NSStatusBar.h"
#include "platform/carbon/HotKeyTruth.h"
#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/Value.h"
#include "platform/runtime/Class.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {
class Bundle;
class NSMenu;
class NSWindow;
} // namespace platform

namespace paneweld {

// What a host app tells the library before anything else happens.
struct HostOptions {
    // The folder that counts as the app's main bundle. Absent: the folder of the running executable; a host whose
    // executable is not its own (a script) names its folder here.
    std::optional<std::string> mainBundlePath {};
    // Reverse-DNS identifier of the app ("com.example.Ideas"). Names the app in the log.
    std::optional<std::string> bundleIdentifier {};
    // Where "Paneweld.framework" is when it is neither in "Frameworks" of the main bundle nor beside the executable.
    std::optional<std::string> frameworkPath {};
    // The X display, as in DISPLAY. Absent: DISPLAY itself.
    std::optional<std::string> display {};
    // The app's name for people, where the desktop shows one ("Ideas"). Absent: the last part of the identifier.
    std::optional<std::string> appName {};
    // Which keys of a Linux keyboard stand for command, option, control and shift in the system-wide shortcut. One key
    // cannot stand for two: start then fails.
    platform::HotKeyModifierKeys shortcutModifiers {};
    // What the desktop's own dialog says that the shortcut does, where a desktop asks its user, in the user's language:
    // "Start a new brainstorm".
    std::string shortcutDescription {};
};

// How far the plug-in reaches, decided at start.
enum class WindowReach {
    X11, // every window of this process
    XWayland, // windows of this process that go through X; native Wayland windows are out of reach: run the toolkit on
              // X
    Unreachable, // no X server could be reached: there are no windows, everything else works
};

// What the host's windows do while a call of the plug-in waits for the user (the folder picker).
enum class ModalWindows {
    Live, // the host's loop goes on: windows repaint and answer
    FrozenWhileOpen, // nobody has told how the host's loop is run from inside: only the library's own side goes on
};

// The host's hold on the library: one a process, made on the main thread before its first window, alive to the end.
// Everything here is for the main thread. Nothing throws.
class Host {
public:
    // Installs the platform and makes the plug-in findable. Fails with a reason when another copy of the library is in
    // the process, or a host was started before.
    static platform::Result<std::unique_ptr<Host>> start(HostOptions options = {});
    ~Host();

    // The plug-in's bundle, or null when there is none: the app then goes on without it.
    std::shared_ptr<platform::Bundle> plugin() const;

    // The event loop is the host's. Wait for this descriptor to become readable, together with everything else, then
    // call dispatch, which never blocks. Ready-made adapters: paneweld/glib.hpp.
    int pollableDescriptor() const;
    void dispatch();
    // For a host without a loop: waits and dispatches until stop is called.
    void run();
    void stop();
    // How a call that waits, such as the folder picker, keeps the host alive: one turn of the host's own loop, which
    // waits until something happens, and in which the descriptor above is served as always. It may be called from
    // inside dispatch. The adapters set it; an empty one takes it away.
    void setNestedIteration(std::function<void()> iterate);
    ModalWindows modalWindows() const;

    WindowReach windowReach() const;

    // Call it right before a window is mapped, after its title holds the identifier and the toolkit's connection is
    // flushed (XFlush, XSync): the window is recognised, styled and placed before anybody can see it. Takes one
    // round trip to the X server. False when the server does not know it as a top-level window of this process.
    // Without the call windows are found by themselves, some milliseconds later.
    bool announceWindow(std::uint32_t xid);

    // The X id of a window that came with a notification, and the way back.
    std::optional<std::uint32_t> nativeHandle(platform::NSWindow const& window) const;
    std::shared_ptr<platform::NSWindow> window(std::uint32_t xid) const;

    // Moves a window that is movable by its background from a button press that the app just got and does not use
    // itself: the pointer's place on the root window in pixels, and the button. The toolkit must have let go of the
    // pointer on its own connection first (GTK: gdk_seat_ungrab, gdk_display_sync). False when the window cannot move
    // so.
    bool beginWindowMove(std::uint32_t xid, int rootX, int rootY, int button);

    // Whether the system-wide shortcut works in this session, and what became of the one that was set last. Setting it
    // fails in silence; this is where a host learns that it never fires, and why. An answer that has to come from the X
    // server or the desktop is Pending until then.
    platform::HotKeyTruth shortcutTruth() const;
    // Called from dispatch when the truth has changed. An empty one takes it away.
    void setShortcutTruthHandler(std::function<void()> handler);

    // For a host that lets its user type a shortcut, from the keyboard as it is now. A shortcut is a key's position and
    // not what the layout writes there: the virtual key code (kVK_..., hotkey/Key.h) of the hardware keycode of a key
    // event, absent for a key that has none.
    std::optional<std::uint32_t> virtualKeyCode(std::uint32_t x11Keycode) const;
    // What the user's layout writes on the key, in UTF-8 and as it is printed there: "A", "É", "&". Absent for a key
    // that types nothing visible, and for one that the keyboard has not.
    std::optional<std::string> keyLabel(std::uint32_t virtualKeyCode) const;
    // Which of command, option, control and shift were held, by HostOptions::shortcutModifiers, from the modifier state
    // of a key event. Other bits of the state do not matter.
    platform::NSEventModifierFlags shortcutModifiers(std::uint32_t x11State) const;

    // Where the status item is seen now. While it is Nowhere or Waiting, hide no window that only the item brings back.
    platform::StatusItemPlace statusItemPlace() const;
    // Where on the screen it was when it was pressed last, in points of the desktop, y upward: for a window that is to
    // open beside it. A point alone where the desktop tells no more; absent when it does not tell.
    std::optional<platform::Rect> statusItemPressedFrame() const;
    // Called from dispatch when the place is another one. An empty one takes it away.
    void setStatusItemPlaceHandler(std::function<void()> handler);

    // What an app keeps of a folder or file that the user has granted, so that it finds it again after a restart, a
    // rename or on another mount point; an "OpenFileURL" is given it as "data". Fails for what is not there.
    platform::Result<platform::Data> bookmarkData(platform::URL const& url);
    // Where that folder is now. Fails when it is not found any more: it is never another one under its name.
    platform::Result<platform::URL> resolveBookmark(platform::Data const& bookmark);

    // Told once for each address that "OpenFileURL" went to open, from dispatch: without an error when a program has
    // it, else with the reason. An empty one takes it away.
    void setOpenHandler(
        std::function<void(platform::URL const& url, std::optional<platform::NSError> const& error)> handler);

    // The app's main menu, so that a shortcut can be checked against it (hotkey/KeyCombo.h).
    void setMainMenu(std::shared_ptr<platform::NSMenu> menu);

    // True while an input method shows unfinished text: Escape then belongs to it and closes nothing.
    void setComposingText(bool isComposing);

    // What ends the app when the plug-in is asked to quit. Without one all windows are asked to close.
    void setTerminateHandler(std::function<void()> handler);

    // Hears every notification of the process, before its observers: for traces.
    void setNotificationTap(std::function<void(platform::Notification const&)> tap);

private:
    Host();
    struct Private;
    std::unique_ptr<Private> m_private;
};

// The version of the library that is loaded, "major.minor.patch".
char const* libraryVersion();

} // namespace paneweld
