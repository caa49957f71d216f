#pragma once

#include "backends/linux/host/Accelerator.h"
#include "platform/carbon/HotKeyTruth.h"
#include "platform/carbon/SymbolicHotKeys.h"
#include "platform/log/OSLog.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace backends {

// The shortcuts that the desktop keeps for itself, read from the desktop's own settings at each question: GNOME and
// its relatives, KDE, Xfce. Any thread; a question takes some dozen milliseconds and never much more than a second, or
// what else is stated as the longest.
class SystemShortcuts : public platform::SymbolicHotKeys {
public:
    // On which keys of the user's layout a key symbol lies, as virtual key codes. Called from any thread. Where it is
    // empty or finds nothing, the layout of the United States counts.
    using Layout = std::function<std::vector<std::uint16_t>(std::uint32_t keysym)>;

    SystemShortcuts(platform::HotKeyModifierKeys modifiers, Layout layout, platform::OSLog log,
        std::chrono::milliseconds longestRead = std::chrono::seconds(1));

    // Fails with unimpErr on a desktop whose settings are not known here. Only what is on is listed, in the settings'
    // order, with every key that writes what the shortcut names.
    Copied copySymbolicHotKeys() override;

    // What the desktop does at this combination, in its words: "GNOME: close". Absent when it keeps it free.
    std::optional<std::string> holderOf(std::uint32_t keyCode, std::uint32_t modifiers) const;

private:
    // A combination in the terms of hot keys.
    struct Entry {
        std::string action;
        std::uint16_t keyCode = 0;
        std::uint32_t modifiers = 0;
    };

    // Absent on an unknown desktop.
    std::optional<std::vector<DesktopShortcut>> readShortcuts() const;
    std::optional<std::vector<Entry>> readEntries() const;
    // Absent when one of the keys stands for no modifier of a hot key.
    std::optional<std::uint32_t> modifierBits(Accelerator const& accelerator) const;
    std::vector<std::uint16_t> keyCodes(std::uint32_t keysym) const;

    platform::HotKeyModifierKeys m_modifiers;
    Layout m_layout;
    platform::OSLog m_log;
    std::chrono::milliseconds m_longestRead;
};

} // namespace backends
