#include "backends/shared/HotKeyTable.h"

namespace backends {

using platform::EventHotKeyID;
using platform::OSStatus;

OSStatus HotKeyTable::add(Combination combination, EventHotKeyID id)
{
    if (combination.second & ~platform::hotKeyModifierBits)
        return platform::paramErr;
    auto const [entry, isNew] = m_idsByCombination.emplace(combination, id);
    return isNew ? platform::noErr : platform::eventHotKeyExistsErr;
}

std::optional<EventHotKeyID> HotKeyTable::find(Combination combination) const
{
    auto const found = m_idsByCombination.find(combination);
    if (found == m_idsByCombination.end())
        return std::nullopt;
    return found->second;
}

} // namespace backends
