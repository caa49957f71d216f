#include "backends/linux/x11/MenuPress.h"

#include <cstdlib>
#include <utility>

namespace backends {

void MenuPress::begin(bool isHeld, std::int32_t x, std::int32_t y)
{
    m_isOpeningPressHeld = isHeld;
    m_x = x;
    m_y = y;
}

MenuPress::Meaning MenuPress::pressed(Place place)
{
    m_isOpeningPressHeld = false;
    return place == Place::Row || place == Place::Menu ? Meaning::Nothing : Meaning::Close;
}

MenuPress::Meaning MenuPress::released(Place place, std::int32_t x, std::int32_t y, std::int32_t slack)
{
    bool const isOpeningPress = std::exchange(m_isOpeningPressHeld, false);
    bool const isClick = std::abs(x - m_x) <= slack && std::abs(y - m_y) <= slack;
    if (isOpeningPress && (isClick || place == Place::Anchor))
        return Meaning::Nothing;
    if (place == Place::Row)
        return Meaning::Choose;
    return place == Place::Menu ? Meaning::Nothing : Meaning::Close;
}

} // namespace backends
