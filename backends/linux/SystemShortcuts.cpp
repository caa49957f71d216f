#include "backends/linux/SystemShortcuts.h"

#include "backends/linux/dbus/XfceShortcuts.h"
#include "backends/linux/host/AnsiLayout.h"
#include "backends/linux/host/GnomeShortcuts.h"
#include "backends/linux/host/KdeShortcuts.h"
#include "backends/shared/HotKeyModifiers.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/Text.h"

#include <chrono>
#include <cstdlib>
#include <utility>

namespace backends {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto longestBusCall = 500ms;

std::vector<DesktopShortcut> readXfceShortcuts(platform::OSLog const& log)
{
    auto const settings = readXfceSettings(Clock::now() + longestBusCall);
    if (settings)
        return xfceShortcuts(settings.value());
    log.error("cannot read the desktop's shortcuts: %{public}s", { settings.error().localizedDescription });
    return {};
}

} // namespace

SystemShortcuts::SystemShortcuts(
    platform::HotKeyModifierKeys modifiers, Layout layout, platform::OSLog log, std::chrono::milliseconds longestRead)
    : m_modifiers(modifiers)
    , m_layout(std::move(layout))
    , m_log(std::move(log))
    , m_longestRead(longestRead)
{
}

SystemShortcuts::Copied SystemShortcuts::copySymbolicHotKeys()
{
    auto const entries = readEntries();
    if (!entries)
        return { platform::unimpErr, std::nullopt };
    platform::List array;
    for (auto const& entry : *entries) {
        array.push_back(platform::Dictionary {
            { platform::kHISymbolicHotKeyEnabled, true },
            { platform::kHISymbolicHotKeyCode, std::uint32_t { entry.keyCode } },
            { platform::kHISymbolicHotKeyModifiers, entry.modifiers },
        });
    }
    return { platform::noErr, std::move(array) };
}

std::optional<std::string> SystemShortcuts::holderOf(std::uint32_t keyCode, std::uint32_t modifiers) const
{
    auto const entries = readEntries();
    if (!entries)
        return std::nullopt;
    for (auto const& entry : *entries) {
        if (entry.keyCode == keyCode && entry.modifiers == modifiers)
            return entry.action;
    }
    return std::nullopt;
}

std::optional<std::vector<DesktopShortcut>> SystemShortcuts::readShortcuts() const
{
    char const* const current = std::getenv("XDG_CURRENT_DESKTOP");
    // The first is the desktop itself, the others what it resembles ("Budgie:GNOME").
    for (auto const name : platform::split(current ? current : "", ':')) {
        if (auto const* const desktop = gnomeDesktop(name))
            return readGnomeShortcuts(*desktop, Clock::now() + m_longestRead, m_log);
        auto const lower = platform::asciiLowerCase(name);
        if (lower == "kde")
            return readKdeShortcuts(m_log);
        if (lower == "xfce")
            return readXfceShortcuts(m_log);
    }
    return std::nullopt;
}

std::optional<std::vector<SystemShortcuts::Entry>> SystemShortcuts::readEntries() const
{
    auto const shortcuts = readShortcuts();
    if (!shortcuts)
        return std::nullopt;
    std::vector<Entry> entries;
    for (auto const& [action, accelerator] : *shortcuts) {
        auto const bits = modifierBits(accelerator);
        if (!bits)
            continue;
        for (auto const code : keyCodes(accelerator.keysym))
            entries.push_back({ action, code, *bits });
    }
    return entries;
}

std::optional<std::uint32_t> SystemShortcuts::modifierBits(Accelerator const& accelerator) const
{
    std::uint32_t bits = 0;
    std::size_t count = 0;
    for (auto const& modifier : hotKeyModifiers(m_modifiers)) {
        if (!accelerator.modifiers.contains(modifier.key))
            continue;
        bits |= modifier.bit;
        ++count;
    }
    if (count != accelerator.modifiers.size())
        return std::nullopt;
    return bits;
}

std::vector<std::uint16_t> SystemShortcuts::keyCodes(std::uint32_t keysym) const
{
    auto codes = m_layout ? m_layout(keysym) : std::vector<std::uint16_t>();
    return codes.empty() ? ansiKeyCodes(keysym) : codes;
}

} // namespace backends
