#pragma once

#include <string>

namespace platform {

// How far hot keys reach in this session.
enum class HotKeyAvailability {
    X11Global, // grabs of the X server: they fire whatever has the keyboard
    XWaylandFocusedOnly, // the same in a Wayland session: they fire while a window that goes through X has the keyboard
    PortalBound, // the desktop itself has bound the shortcut and calls us
    PortalDeclined, // the user, asked by the desktop, did not want it
    Unavailable, // neither an X server nor a desktop that binds shortcuts
};

// What became of a registration.
enum class HotKeyResult {
    None, // nothing is registered
    Pending, // asked, and not answered yet
    Active, // it fires, as far as the availability says
    HeldByAnotherClient, // another program has the combination, or the window manager
    HeldByThisProcess, // another registration of this process has it
    KeyNotOnKeyboard, // no key of this keyboard lies at the position
    ModifierNotOnKeyboard, // no key of this keyboard gives one of the modifiers
    NotBound, // the desktop answered, and did not bind it
    Declined, // the user did not want it
    Unavailable, // there is nobody to ask
};

// What a host may want to know before it tells its user that a shortcut works. The registration itself never fails
// aloud.
struct HotKeyTruth {
    HotKeyAvailability availability = HotKeyAvailability::Unavailable;
    // Of the registration that was made last and is still there.
    HotKeyResult lastRegistration = HotKeyResult::None;
    // The desktop's own words for what the user must press, when it has bound the shortcut: "Ctrl+Alt+N". Else empty.
    std::string trigger {};
    // Who has the combination, where a desktop says so, in its words. Else empty.
    std::string holder {};

    bool operator==(HotKeyTruth const&) const = default;
};

// The keys of a Linux keyboard that can stand for the four modifiers of a hot key.
enum class ModifierKey { Shift, Control, Alt, Super, Hyper, Meta };

// Which key stands for which modifier. No key may stand for two.
struct HotKeyModifierKeys {
    ModifierKey command = ModifierKey::Super;
    ModifierKey option = ModifierKey::Alt;
    ModifierKey control = ModifierKey::Control;
    ModifierKey shift = ModifierKey::Shift;

    bool operator==(HotKeyModifierKeys const&) const = default;
};

} // namespace platform
