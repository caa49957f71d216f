#pragma once

#include "platform/carbon/EventHotKeys.h"

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

namespace backends {

// The key combinations that this process has registered, and under which id each: the part of a hot-key service that
// is the same in every world.
class HotKeyTable {
public:
    // The virtual key code and the modifiers.
    using Combination = std::pair<std::uint32_t, std::uint32_t>;

    // paramErr for modifiers other than the four, eventHotKeyExistsErr for a combination that is here already. The
    // table has changed only when the status is noErr.
    platform::OSStatus add(Combination combination, platform::EventHotKeyID id);
    void remove(Combination combination) { m_idsByCombination.erase(combination); }

    std::optional<platform::EventHotKeyID> find(Combination combination) const;
    std::map<Combination, platform::EventHotKeyID> const& idsByCombination() const { return m_idsByCombination; }

private:
    std::map<Combination, platform::EventHotKeyID> m_idsByCombination;
};

} // namespace backends
