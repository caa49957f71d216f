#pragma once

#include "tests/linux/Client.h"

#include <string>
#include <vector>

namespace paneweld_tests {

// The host's toolkit: makes windows of this process over a connection of its own, paints them and answers to what a
// window manager asks of them.
class Toolkit : public Client {
public:
    using Client::Client;

    struct Window {
        Geometry geometry { 100, 100, 400, 300 };
        std::string title = "plain";
        bool hasDeleteProtocol = true;
        bool isOverrideRedirect = false;
    };
    // Made and not mapped.
    xcb_window_t make(Window const& window);
    xcb_window_t make() { return make(Window {}); }
    void map(xcb_window_t window);
    // As ICCCM 4.1.4 wants it.
    void withdraw(xcb_window_t window);
    void iconify(xcb_window_t window);
    void destroy(xcb_window_t window);
    // Both properties that hold a title.
    void setTitle(xcb_window_t window, std::string const& title);
    void setWords(
        xcb_window_t window, std::string const& property, xcb_atom_t type, std::vector<std::uint32_t> const& words);

    // What came in: reads without waiting, and does what the toolkit does by itself.
    void handleEvents();
    bool closesWhenAsked = true;
    int closeRequests = 0;
    std::vector<xcb_keycode_t> pressedKeys {};
    std::vector<xcb_keycode_t> releasedKeys {};
};

} // namespace paneweld_tests
