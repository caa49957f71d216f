#pragma once

#include "tests/linux/Client.h"

#include <cstdint>
#include <string>
#include <vector>

namespace paneweld_tests {

// A tray of our own on a test's X server: a bar at the top of the screen that takes icons side by side. A later one
// takes the tray over from an earlier one without a gap.
class TrayStandIn : public Client {
public:
    struct Manners {
        Geometry bar { 200, 0, 400, 30 };
        std::uint32_t ground = 0x204080;
        bool isVertical = false;
        // Icons are to have a visual with an alpha channel.
        bool wantsAlpha = false;
        // Red, green and blue, 16 bits each. Empty for a tray that does not tell.
        std::vector<std::uint32_t> foreground {};
        // Of each icon.
        int width = 30;
        int height = 30;
        bool takesIcons = true;
    };

    TrayStandIn(std::string const& display, Manners manners);
    explicit TrayStandIn(std::string const& display)
        : TrayStandIn(display, Manners {})
    {
    }

    // What came in: reads without waiting, and takes in who asks.
    void handleEvents();
    // Who has asked, and who of them is inside.
    std::vector<xcb_window_t> const& asked() const { return m_asked; }
    std::vector<xcb_window_t> const& icons() const { return m_icons; }
    void setForeground(std::vector<std::uint32_t> const& foreground);
    void setSize(xcb_window_t icon, int width, int height);
    // Lets an icon go and stays.
    void putOut(xcb_window_t icon);
    // Goes in order: lets all icons go, and then its place.
    void quit();
    // Where the middle of the first icon is on the screen.
    Geometry iconPlace() { return geometry(m_icons.at(0)); }
    // A pixel of an icon as it is in memory, with its alpha.
    std::uint32_t iconPixel(xcb_window_t icon, int x, int y);

private:
    void setWords(std::string const& property, xcb_atom_t type, std::vector<std::uint32_t> const& words);
    void announce();
    void take(xcb_window_t icon);
    xcb_visualid_t alphaVisual() const;

    Manners m_manners;
    xcb_window_t m_owner;
    xcb_window_t m_bar;
    xcb_atom_t m_opcode;
    std::vector<xcb_window_t> m_asked;
    std::vector<xcb_window_t> m_icons;
};

} // namespace paneweld_tests
