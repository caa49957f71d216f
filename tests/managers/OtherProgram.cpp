#include "tests/managers/OtherProgram.h"

#include <cstdlib>

namespace paneweld_tests {

namespace {

// Over the panel's middle; the panel's ends stick out on both sides.
constexpr Geometry place { 440, 460, 400, 260 };
constexpr Geometry common { 640, 660, 1, 1 };
// What the hosts of these tests are painted with.
constexpr std::uint32_t panelColour = 0x0000FF;
constexpr std::uint32_t fromPager = 2;

} // namespace

OtherProgram::OtherProgram(Session const& session, Client& user)
    : m_hasPixels(session.hasPixels())
    , m_user(user)
    , m_toolkit(session.display())
{
}

void OtherProgram::open()
{
    m_window = m_toolkit.make({ .geometry = place, .title = "other" });
    m_toolkit.map(m_window);
    m_user.waitUntil([&] { return m_user.isViewable(m_window); });
    bringForward();
    takePlace();
}

void OtherProgram::takePlace()
{
    std::uint32_t const values[] = { place.x, place.y, place.width, place.height };
    xcb_configure_window(m_toolkit.wire(), m_window,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    m_toolkit.sync();
    m_user.waitUntil([&] {
        auto const now = m_user.geometry(m_window);
        return now.x < common.x && now.x + now.width > common.x && now.y < common.y && now.bottom() > common.y;
    });
}

void OtherProgram::close() { m_toolkit.destroy(m_window); }

bool OtherProgram::bringForward(xcb_window_t window)
{
    // A program that is just showing its window comes forward a little later; the user clicks again then.
    constexpr int looksBetweenClicks = 40;
    int looks = 0;
    return m_user.waitUntil([&] {
        // Sent in any case: it raises a window that is active already.
        if (looks++ % looksBetweenClicks == 0)
            m_user.sendToRoot(window, "_NET_ACTIVE_WINDOW", { fromPager, XCB_CURRENT_TIME, XCB_WINDOW_NONE });
        return m_user.activeWindow() == window;
    });
}

bool OtherProgram::typeInto()
{
    strikeLetter();
    return m_user.waitUntil([&] { return hearsKey(); });
}

bool OtherProgram::insistOnTyping()
{
    constexpr int looksBetweenPresses = 40;
    int looks = 0;
    return m_user.waitUntil([&] {
        if (looks++ % looksBetweenPresses == 0) {
            bringForward();
            strikeLetter();
        }
        return hearsKey();
    });
}

void OtherProgram::strikeLetter()
{
    constexpr xcb_keycode_t letter = 38;
    // Keys of before are not this one.
    while (auto* const event = xcb_poll_for_event(m_toolkit.wire()))
        std::free(event);
    m_user.press(letter);
    m_user.release(letter);
}

bool OtherProgram::hearsKey()
{
    while (auto* const event = xcb_poll_for_event(m_toolkit.wire())) {
        bool const isKey = (event->response_type & 0x7F) == XCB_KEY_PRESS;
        auto const time = reinterpret_cast<xcb_key_press_event_t const*>(event)->time;
        std::free(event);
        if (!isKey)
            continue;
        m_toolkit.setWords(m_window, "_NET_WM_USER_TIME", XCB_ATOM_CARDINAL, { time });
        return true;
    }
    return false;
}

bool OtherProgram::isBelow(xcb_window_t panel)
{
    return m_hasPixels ? m_user.pixel(common.x, common.y) == panelColour : m_user.isAbove(panel, m_window);
}

} // namespace paneweld_tests
