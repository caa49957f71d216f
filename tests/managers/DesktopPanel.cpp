#include "tests/managers/DesktopPanel.h"

#include "backends/linux/x11/Handles.h"

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
            m_icon = iconBelow(m_user.root());
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

xcb_window_t DesktopPanel::iconBelow(xcb_window_t window)
{
    auto* const wire = m_user.wire();
    backends::XHandle<xcb_query_tree_reply_t> const tree(
        xcb_query_tree_reply(wire, xcb_query_tree(wire, window), nullptr));
    if (!tree)
        return XCB_WINDOW_NONE;
    auto const* const children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        if (m_user.words(children[i], "_XEMBED_INFO") && m_user.isViewable(children[i]))
            return children[i];
        if (auto const icon = iconBelow(children[i]); icon != XCB_WINDOW_NONE)
            return icon;
    }
    return XCB_WINDOW_NONE;
}

} // namespace paneweld_tests
