#include "tests/managers/DesktopPanel.h"

#include <gtest/gtest.h>

namespace paneweld_tests {

DesktopPanel::DesktopPanel(std::string const& busAddress, Client& user)
    : m_busAddress(busAddress)
    , m_user(user)
    , m_watcher(busAddress)
{
}

bool DesktopPanel::awaitItem()
{
    return m_user.waitUntil([&] {
        if (auto const items = m_watcher.items(); items.size() == 1)
            m_panel = std::make_unique<PanelStandIn>(m_busAddress, items.front());
        else
            m_icon = m_user.find(m_user.root(),
                [&](auto window) { return m_user.words(window, "_XEMBED_INFO") && m_user.isViewable(window); });
        return m_panel || m_icon != XCB_WINDOW_NONE;
    });
}

void DesktopPanel::click()
{
    if (m_panel) {
        EXPECT_EQ(m_panel->askItem("Activate", "ii", 1, 1).get(), "");
        return;
    }
    auto const place = m_user.geometry(m_icon);
    m_user.movePointer(place.x + place.width / 2, place.y + place.height / 2);
    m_user.click();
}

} // namespace paneweld_tests
