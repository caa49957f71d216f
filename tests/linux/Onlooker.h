#pragma once

#include "tests/linux/Client.h"

#include <optional>
#include <string>
#include <vector>

namespace paneweld_tests {

// Somebody else on the same screen who writes down everything that happens to one window, in the server's order.
class Onlooker : public Client {
public:
    explicit Onlooker(std::string const& display);

    enum class Kind { Mapped, Unmapped, Reparented, Configured, Opacity, Shape, Property };
    struct Entry {
        Kind kind = Kind::Mapped;
        // On the root, of the window with its frame; for the kind Configured.
        Geometry geometry {};
        // For the kind Opacity, when it was looked at a moment later.
        double opacity = 1;
        bool isEmptyShape = false;
        std::string property {};
    };

    void watch(xcb_window_t window);
    // What came in, without waiting.
    void look();
    std::vector<Entry> const& entries() const { return m_entries; }
    std::vector<Geometry> geometries() const;
    void clear() { m_entries.clear(); }

private:
    void note(xcb_generic_event_t const& event);

    xcb_window_t m_window = XCB_WINDOW_NONE;
    xcb_window_t m_frame = XCB_WINDOW_NONE;
    std::uint8_t m_shapeEvent = 0;
    std::vector<Entry> m_entries;
};

} // namespace paneweld_tests
