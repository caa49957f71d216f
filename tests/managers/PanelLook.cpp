#include "tests/managers/PanelLook.h"

namespace paneweld_tests {

Geometry workArea(Client& client)
{
    auto const area = client.words(client.root(), "_NET_WORKAREA");
    if (!area || area->size() < 4)
        return { 0, 0, client.screen().width_in_pixels, client.screen().height_in_pixels };
    auto const word = [&](std::size_t index) { return static_cast<int>((*area)[index]); };
    return { word(0), word(1), word(2), word(3) };
}

Geometry firstPlaceOfPanel(Client& client)
{
    constexpr int width = 640;
    constexpr int height = 91;
    constexpr int gap = 84;
    auto const area = workArea(client);
    return { area.x + (area.width - width) / 2, area.bottom() - gap - height, width, height };
}

Geometry grownTo(Geometry place, int height)
{
    place.y = place.bottom() - height;
    place.height = height;
    return place;
}

Geometry visiblePlace(Client& client, xcb_window_t window)
{
    auto place = client.geometry(window);
    // Left, right, top, bottom.
    if (auto const insets = client.words(window, "_GTK_FRAME_EXTENTS"); insets && insets->size() == 4) {
        auto const inset = [&](std::size_t index) { return static_cast<int>((*insets)[index]); };
        place.x += inset(0);
        place.y += inset(2);
        place.width -= inset(0) + inset(1);
        place.height -= inset(2) + inset(3);
    }
    return place;
}

bool isBorderless(Client& client, xcb_window_t window)
{
    return client.geometry(client.frameOf(window)) == client.geometry(window);
}

bool isOnAllDesktops(Client& client, xcb_window_t window)
{
    constexpr std::uint32_t allDesktops = 0xFFFFFFFF;
    auto const desktop = client.words(window, "_NET_WM_DESKTOP");
    return (desktop && !desktop->empty() && desktop->front() == allDesktops)
        || client.hasState(window, "_NET_WM_STATE_STICKY");
}

} // namespace paneweld_tests
