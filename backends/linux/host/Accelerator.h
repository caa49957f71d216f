#pragma once

#include "platform/carbon/HotKeyTruth.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace backends {

// A key combination as a desktop writes it into its settings: modifiers, and what the key writes, apart from any
// keyboard.
struct Accelerator {
    std::set<platform::ModifierKey> modifiers {};
    // Of the unshifted key where it is a letter: "n", and never "N".
    std::uint32_t keysym = 0;

    bool operator==(Accelerator const&) const = default;
};

// A combination that the desktop keeps for itself, and what it does with it, in the desktop's words.
struct DesktopShortcut {
    std::string action;
    Accelerator accelerator {};

    bool operator==(DesktopShortcut const&) const = default;
};

// "<Primary><Shift>F4", "<super>x", "XF86AudioMute": the notation of GTK, which GNOME, its relatives and Xfce use.
// Absent for "disabled", for "", for a modifier alone, for what needs further modifiers, happens at a release or names
// no known key.
std::optional<Accelerator> acceleratorFromGtk(std::string_view text);

// "Meta+Shift+A", "Ctrl+PgUp", "Meta++", "Volume Up": the portable notation of Qt, which KDE uses. Its Meta is the
// Super key. Absent for "none", for "", for a modifier alone, for several chords ("Ctrl+K, Ctrl+J": the first alone
// does nothing) and for unknown keys.
std::optional<Accelerator> acceleratorFromQt(std::string_view text);

} // namespace backends
