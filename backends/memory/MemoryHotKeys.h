#pragma once

#include "backends/memory/Ledger.h"
#include "backends/shared/HotKeyTable.h"
#include "platform/carbon/EventHotKeys.h"

#include <cstdint>
#include <map>
#include <set>

namespace backends {

// The hot-key service of a memory world, and the user's hand on its keyboard. Other programs may hold combinations;
// they are registered all the same and never fire.
class MemoryHotKeys : public platform::EventHotKeys {
public:
    explicit MemoryHotKeys(Ledger& ledger)
        : m_ledger(ledger)
    {
    }

    [[nodiscard]] Registered registerEventHotKey(
        std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id) override;

    // The user presses a combination, or lets it go. True when it was reported: it is registered, nobody else holds
    // it, and it was not down already. Only what was reported as pressed is reported as released, and only while
    // that registration lasts.
    bool press(std::uint32_t keyCode, std::uint32_t modifiers);
    bool release(std::uint32_t keyCode, std::uint32_t modifiers);
    void setHeldElsewhere(std::uint32_t keyCode, std::uint32_t modifiers, bool isHeld = true);

    HotKeyTable const& table() const { return m_table; }

private:
    class Registration;

    Ledger& m_ledger;
    HotKeyTable m_table;
    std::set<HotKeyTable::Combination> m_heldElsewhere;
    std::map<HotKeyTable::Combination, platform::EventHotKeyID> m_down;
};

} // namespace backends
