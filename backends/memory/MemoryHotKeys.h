#pragma once

#include "backends/memory/Ledger.h"
#include "backends/shared/HotKeyTable.h"
#include "backends/shared/HotKeyTruthTeller.h"
#include "platform/carbon/EventHotKeys.h"

#include <cstdint>
#include <map>
#include <set>
#include <vector>

namespace backends {

// The hot-key service of a memory world, and the user's hand on its keyboard. Other programs may hold combinations;
// they are registered all the same and never fire.
class MemoryHotKeys : public platform::EventHotKeys {
public:
    MemoryHotKeys(Ledger& ledger, platform::Queue& mainQueue)
        : m_ledger(ledger)
        , m_teller(
              mainQueue, [this] { return truth(); }, [this] { reportTruthChanged(); })
    {
    }

    [[nodiscard]] Registered registerEventHotKey(
        std::uint32_t keyCode, std::uint32_t modifiers, platform::EventHotKeyID id) override;
    platform::HotKeyTruth truth() const override;

    // The user presses a combination, or lets it go. True when it was reported: it is registered, nobody else holds
    // it, and it was not down already. Only what was reported as pressed is reported as released, and only while
    // that registration lasts.
    bool press(std::uint32_t keyCode, std::uint32_t modifiers);
    bool release(std::uint32_t keyCode, std::uint32_t modifiers);
    void setHeldElsewhere(std::uint32_t keyCode, std::uint32_t modifiers, bool isHeld = true);
    // What the session is like; keys go everywhere unless it is told otherwise.
    void setAvailability(platform::HotKeyAvailability availability);

    HotKeyTable const& table() const { return m_table; }

private:
    class Registration;

    Ledger& m_ledger;
    HotKeyTable m_table;
    platform::HotKeyAvailability m_availability = platform::HotKeyAvailability::X11Global;
    // In the order of registration.
    std::vector<HotKeyTable::Combination> m_registered;
    HotKeyTruthTeller m_teller;
    std::set<HotKeyTable::Combination> m_heldElsewhere;
    std::map<HotKeyTable::Combination, platform::EventHotKeyID> m_down;
};

} // namespace backends
