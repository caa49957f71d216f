#include "backends/memory/MemoryHotKeys.h"

#include <utility>

namespace backends {

using platform::EventHotKeyID;
using platform::HotKeyResult;
using platform::HotKeyTruth;

class MemoryHotKeys::Registration : public platform::EventHotKey {
public:
    Registration(MemoryHotKeys& service, HotKeyTable::Combination combination, EventHotKeyID id)
        : m_service(service)
        , m_combination(combination)
        , m_id(id)
    {
    }

    ~Registration() override
    {
        m_service.m_table.remove(m_combination);
        std::erase(m_service.m_registered, m_combination);
        m_service.m_down.erase(m_combination);
        m_service.m_ledger.note("hotkey unregister id=" + std::to_string(m_id.id));
        m_service.m_teller.truthMayHaveChanged();
    }

private:
    MemoryHotKeys& m_service;
    HotKeyTable::Combination m_combination;
    EventHotKeyID m_id;
};

platform::EventHotKeys::Registered MemoryHotKeys::registerEventHotKey(
    std::uint32_t keyCode, std::uint32_t modifiers, EventHotKeyID id)
{
    auto const status = m_table.add({ keyCode, modifiers }, id);
    m_ledger.note("hotkey register code=" + std::to_string(keyCode) + " modifiers=" + std::to_string(modifiers)
        + " id=" + std::to_string(id.id) + (status == platform::noErr ? "" : " refused " + std::to_string(status)));
    if (status != platform::noErr)
        return { status };
    m_registered.emplace_back(keyCode, modifiers);
    m_teller.truthMayHaveChanged();
    return { status, std::make_unique<Registration>(*this, HotKeyTable::Combination { keyCode, modifiers }, id) };
}

bool MemoryHotKeys::press(std::uint32_t keyCode, std::uint32_t modifiers)
{
    HotKeyTable::Combination const combination { keyCode, modifiers };
    auto const id = m_table.find(combination);
    if (!id || m_heldElsewhere.contains(combination) || !m_down.emplace(combination, *id).second)
        return false;
    reportPressed(*id);
    return true;
}

bool MemoryHotKeys::release(std::uint32_t keyCode, std::uint32_t modifiers)
{
    auto const pressed = m_down.extract({ keyCode, modifiers });
    if (!pressed)
        return false;
    reportReleased(pressed.mapped());
    return true;
}

void MemoryHotKeys::setHeldElsewhere(std::uint32_t keyCode, std::uint32_t modifiers, bool isHeld)
{
    if (isHeld)
        m_heldElsewhere.emplace(keyCode, modifiers);
    else
        m_heldElsewhere.erase({ keyCode, modifiers });
    m_teller.truthMayHaveChanged();
}

void MemoryHotKeys::setAvailability(platform::HotKeyAvailability availability)
{
    m_availability = availability;
    m_teller.truthMayHaveChanged();
}

HotKeyTruth MemoryHotKeys::truth() const
{
    HotKeyTruth truth { m_availability };
    if (!m_registered.empty())
        truth.lastRegistration
            = m_heldElsewhere.contains(m_registered.back()) ? HotKeyResult::HeldByAnotherClient : HotKeyResult::Active;
    return truth;
}

} // namespace backends
