#include "tests/managers/OpeningWatch.h"

#include "tests/managers/PanelLook.h"

#include <algorithm>
#include <cstdlib>
#include <poll.h>
#include <sstream>

namespace paneweld_tests {

namespace {

constexpr int firstLine = 60;
constexpr int linesApart = 200;
constexpr int looksAtStillScreen = 10;
// A compositor's shadow may reach that far.
constexpr int shadow = 64;

} // namespace

OpeningWatch::OpeningWatch(std::string const& display, Wanted wanted, Pixels pixels)
    : m_client(display)
    , m_wanted(std::move(wanted))
    , m_pixels(pixels)
    , m_isComposited(m_client.selectionOwner("_NET_WM_CM_S0") != XCB_WINDOW_NONE)
{
    std::uint32_t const mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_client.wire(), m_client.root(), XCB_CW_EVENT_MASK, &mask);
    auto const isStill = [&] {
        auto now = lines();
        bool const isSame = now == m_linesBefore;
        m_linesBefore = std::move(now);
        return isSame;
    };
    int still = 0;
    m_client.waitUntil([&] { return (still = isStill() ? still + 1 : 0) == looksAtStillScreen; });
    m_windows.clear();
    m_thread = std::thread([this] { run(); });
}

OpeningWatch::~OpeningWatch() { stop(); }

void OpeningWatch::stop()
{
    m_isStopping = true;
    if (m_thread.joinable())
        m_thread.join();
}

void OpeningWatch::run()
{
    while (!m_isStopping) {
        findNewWindows();
        // One moment: nothing changes while he looks.
        xcb_grab_server(m_client.wire());
        auto const words = complaint();
        xcb_ungrab_server(m_client.wire());
        xcb_flush(m_client.wire());
        ++m_looks;
        if (!words.empty() && m_wrongLooks++ == 0)
            m_firstWrong = "at look " + std::to_string(m_looks) + ": " + words;
        // The others need the server too.
        poll(nullptr, 0, 1);
    }
}

void OpeningWatch::findNewWindows()
{
    while (auto* event = xcb_poll_for_event(m_client.wire())) {
        auto const type = event->response_type & 0x7F;
        if (type == XCB_CREATE_NOTIFY) {
            auto const& created = reinterpret_cast<xcb_create_notify_event_t const&>(*event);
            if (!created.override_redirect)
                m_windows.push_back(created.window);
        } else if (type == XCB_DESTROY_NOTIFY) {
            std::erase(m_windows, reinterpret_cast<xcb_destroy_notify_event_t const&>(*event).window);
        }
        std::free(event);
    }
}

std::string OpeningWatch::complaint()
{
    for (auto const window : m_windows) {
        if (auto const words = complaintAbout(window); !words.empty())
            return words;
    }
    return complaintAboutLines();
}

std::string OpeningWatch::complaintAbout(xcb_window_t window)
{
    if (!m_client.isViewable(window) || m_client.hasEmptyShape(window))
        return {};
    auto const opacity = m_client.opacity(window);
    // A window manager's own windows have no title.
    auto const title = m_client.text(window, "_NET_WM_NAME");
    if ((m_isComposited && opacity == 0) || !title)
        return {};
    auto const place = visiblePlace(m_client, window);
    if (isRightPlace(place) && *title == m_wanted.title && isBorderless(m_client, window))
        return {};
    std::ostringstream words;
    words << "seen with opacity " << opacity << " at " << place << ", title " << *title << ", borderless "
          << isBorderless(m_client, window);
    return words.str();
}

bool OpeningWatch::isRightPlace(Geometry const& place) const
{
    auto const& first = m_wanted.place;
    return place.x == first.x && place.width == first.width && place.bottom() == first.bottom()
        && place.height >= first.height && place.height <= m_wanted.tallest;
}

std::string OpeningWatch::complaintAboutLines()
{
    auto const now = lines();
    auto const difference = std::mismatch(now.begin(), now.end(), m_linesBefore.begin(), m_linesBefore.end());
    if (difference.first == now.end())
        return {};
    auto const changed = std::count_if(
        now.begin(), now.end(), [&, before = m_linesBefore.begin()](auto pixel) mutable { return pixel != *before++; });
    std::ostringstream words;
    words << "away from its place " << changed << " pixels changed, one of them to " << std::hex << *difference.first;
    return words.str();
}

std::vector<std::uint32_t> OpeningWatch::lines()
{
    std::vector<std::uint32_t> pixels;
    auto const& screen = m_client.screen();
    for (int y = firstLine; m_pixels == Pixels::Seen && y < screen.height_in_pixels; y += linesApart) {
        if (y > m_wanted.place.bottom() - m_wanted.tallest - shadow && y < m_wanted.place.bottom() + shadow)
            continue;
        auto const line = m_client.pixels({ 0, y, screen.width_in_pixels, 1 });
        pixels.insert(pixels.end(), line.begin(), line.end());
    }
    return pixels;
}

} // namespace paneweld_tests
