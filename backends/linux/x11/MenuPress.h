#pragma once

#include <cstdint>

namespace backends {

// What the buttons of a pointer mean to an open menu. The press that opened it may still be held: then it chooses where
// it is let go of after a movement, and a mere click leaves the menu open for the next one. Pure.
class MenuPress {
public:
    enum class Place {
        // On a row that can be chosen.
        Row,
        // Elsewhere in the menu.
        Menu,
        // On the icon that it was opened from.
        Anchor,
        Outside,
    };
    enum class Meaning { Nothing, Choose, Close };

    // As it was when the pointer became ours; in pixels of the root.
    void begin(bool isHeld, std::int32_t x, std::int32_t y);

    Meaning pressed(Place place);
    // The slack is how far a hand moves without meaning to.
    Meaning released(Place place, std::int32_t x, std::int32_t y, std::int32_t slack);

private:
    bool m_isOpeningPressHeld = false;
    std::int32_t m_x = 0;
    std::int32_t m_y = 0;
};

} // namespace backends
