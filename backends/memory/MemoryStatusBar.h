#pragma once

#include "backends/memory/Ledger.h"
#include "backends/memory/MemoryStatusBarButton.h"
#include "platform/appkit/NSStatusBar.h"

#include <memory>

namespace backends {

// An item of a memory world's status bar.
class MemoryStatusItem : public platform::NSStatusItem {
public:
    MemoryStatusItem(Ledger& ledger, std::shared_ptr<MemoryStatusBarButton> button);
    ~MemoryStatusItem() override;

    std::shared_ptr<platform::NSStatusBarButton> button() const override { return m_button; }
    std::shared_ptr<MemoryStatusBarButton> const& memoryButton() const { return m_button; }

private:
    Ledger& m_ledger;
    std::shared_ptr<MemoryStatusBarButton> m_button;
};

// The status bar of a memory world, whose items come and go in the ledger.
class MemoryStatusBar : public platform::NSStatusBar {
public:
    explicit MemoryStatusBar(Ledger& ledger)
        : m_ledger(ledger)
    {
    }

    std::shared_ptr<platform::NSStatusItem> statusItemWithLength(double length) override;
    platform::StatusItemPlace place() const override { return m_place; }

    // What the desktop is like: items have a button unless it is told otherwise before they are made, and are seen in
    // a panel.
    void setHasButton(bool hasButton) { m_hasButton = hasButton; }
    void setPlace(platform::StatusItemPlace place);
    using NSStatusBar::setPressedFrame;

    // The item that was made last, while it lives, and what one sees of it; else null.
    std::shared_ptr<MemoryStatusItem> item() const { return m_item.lock(); }
    std::shared_ptr<MemoryStatusBarButton> button() const;

private:
    Ledger& m_ledger;
    std::weak_ptr<MemoryStatusItem> m_item;
    platform::StatusItemPlace m_place = platform::StatusItemPlace::Panel;
    bool m_hasButton = true;
};

} // namespace backends
