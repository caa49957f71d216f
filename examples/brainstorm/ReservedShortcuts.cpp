#include "examples/brainstorm/ReservedShortcuts.h"
#include "examples/brainstorm/Gtk.h"
#include "examples/brainstorm/ShortcutWords.h"
#include "platform/Platform.h"

#include <algorithm>

namespace ideas {

using hotkey::KeyCombo;
using platform::NSEventModifierFlags;

namespace {

bool contains(std::vector<KeyCombo> const& list, KeyCombo const& combo)
{
    return std::find(list.begin(), list.end(), combo) != list.end();
}

// The list of usual commands has them on Command, which is where keyboards of its home have them. Here the same
// commands are on Control.
std::vector<KeyCombo> usualCommandsHere()
{
    auto combos = KeyCombo::standardKeyCombos();
    std::erase_if(
        combos, [](KeyCombo const& combo) { return combo.modifiers().contains(NSEventModifierFlags::control); });
    for (auto& combo : combos) {
        auto const others = combo.modifiers() & (NSEventModifierFlags::option | NSEventModifierFlags::shift);
        combo.setModifiers(others | NSEventModifierFlags::control);
    }
    return combos;
}

} // namespace

ReservedShortcuts::ReservedShortcuts(std::function<void()> didRead)
{
    if (!platform::Platform::isInstalled())
        return;
    auto& platform = platform::Platform::current();
    m_reader = std::thread([this, &platform, isAlive = std::weak_ptr<bool>(m_isAlive), didRead = std::move(didRead)] {
        auto combos = KeyCombo::systemKeyCombos(platform);
        later([this, isAlive, didRead, combos = std::move(combos)] {
            if (isAlive.expired())
                return;
            m_ofDesktop = combos;
            didRead();
        });
    });
}

ReservedShortcuts::~ReservedShortcuts()
{
    if (m_reader.joinable())
        m_reader.join();
}

std::optional<std::string> ReservedShortcuts::warning(KeyCombo const& combo) const
{
    auto const keys = textOf(combo);
    if (contains(m_ofDesktop, combo))
        return keys + " is used by your desktop. Only one of the two will hear it.";
    if (platform::Platform::isInstalled()
        && contains(KeyCombo::mainMenuKeyCombos(platform::Platform::current()), combo))
        return keys + " is used by Ideas itself, for one of its commands.";
    if (contains(KeyCombo::standardKeyCombos(), combo) || contains(usualCommandsHere(), combo))
        return keys + " is a usual command. Apps do not hear it any more.";
    return std::nullopt;
}

} // namespace ideas
