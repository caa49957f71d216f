#pragma once

#include "backends/linux/x11/Connection.h"
#include "backends/linux/x11/PixelRect.h"

#include <array>
#include <map>
#include <optional>
#include <span>

namespace backends {

// What the desktop's panels and docks keep for themselves at the edges of the screen (EWMH, _NET_WM_STRUT_PARTIAL). A
// window manager that tells what they leave of the whole screen alone takes from every monitor what a panel takes from
// one. Main thread only.
class ScreenEdges {
public:
    explicit ScreenEdges(Connection& connection);

    // Asks the windows that the window manager looks after; the answers come with the next replies. All of them, or
    // those that have not been asked yet: a window that says something else later is noticed when the window manager
    // comes to another result.
    enum class Windows { All, New };
    void read(Windows which);

    // What is left of the monitor on a screen of that size. None when nobody keeps an edge, or when nothing is left.
    std::optional<PixelRect> freePart(PixelRect const& monitor, PixelRect const& screen) const;

private:
    // Pixels kept at the left, right, top and bottom edge of the screen, then first and last pixel along each of them.
    using Kept = std::array<std::int32_t, 12>;

    void readWindow(xcb_window_t window);
    static std::optional<Kept> keptBy(std::span<std::uint32_t const> words);

    Connection& m_connection;
    // Each window that was asked; without a value it keeps nothing.
    std::map<xcb_window_t, std::optional<Kept>> m_windows;
};

} // namespace backends
