#include "backends/memory/MemoryStatusBar.h"

#include <utility>

namespace backends {

MemoryStatusItem::MemoryStatusItem(Ledger& ledger, std::shared_ptr<MemoryStatusBarButton> button)
    : m_ledger(ledger)
    , m_button(std::move(button))
{
}

MemoryStatusItem::~MemoryStatusItem() { m_ledger.note("statusitem remove"); }

std::shared_ptr<platform::NSStatusItem> MemoryStatusBar::statusItemWithLength(double length)
{
    m_ledger.note("statusitem make length=" + ledgerText(length));
    auto item = std::make_shared<MemoryStatusItem>(
        m_ledger, m_hasButton ? std::make_shared<MemoryStatusBarButton>(m_ledger) : nullptr);
    m_item = item;
    return item;
}

void MemoryStatusBar::setPlace(platform::StatusItemPlace place)
{
    if (std::exchange(m_place, place) != place)
        reportPlaceChanged();
}

std::shared_ptr<MemoryStatusBarButton> MemoryStatusBar::button() const
{
    auto const found = item();
    return found ? found->memoryButton() : nullptr;
}

} // namespace backends
