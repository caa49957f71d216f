#include "backends/linux/x11/WindowEvents.h"

#include <gtest/gtest.h>
#include <string>

namespace paneweld_tests {

using backends::WindowEvents;

namespace {

xcb_generic_event_t unmapOf(xcb_window_t window)
{
    xcb_generic_event_t event {};
    event.response_type = XCB_UNMAP_NOTIFY;
    reinterpret_cast<xcb_unmap_notify_event_t&>(event).event = window;
    return event;
}

} // namespace

TEST(WindowEvents, GoToWhoListensAtTheWindowInTheOrderOfTheirBeginning)
{
    WindowEvents events;
    std::string heard;
    auto const first = events.listen(7, [&](auto const&) { heard += "first "; });
    auto const other = events.listen(8, [&](auto const&) { heard += "other "; });
    auto const second = events.listen(7, [&](auto const&) { heard += "second "; });
    events.handle(unmapOf(7));
    EXPECT_EQ(heard, "first second ");
    xcb_generic_event_t change {};
    change.response_type = XCB_MAPPING_NOTIFY;
    events.handle(change);
    EXPECT_EQ(heard, "first second ");
}

TEST(WindowEvents, DoNotReachWhoHasEnded)
{
    WindowEvents events;
    std::string heard;
    WindowEvents::Registration second;
    auto const first = events.listen(7, [&](auto const&) {
        heard += "first ";
        second = {};
    });
    second = events.listen(7, [&](auto const&) { heard += "second "; });
    events.handle(unmapOf(7));
    EXPECT_EQ(heard, "first ");
}

TEST(WindowEvents, DoNotReachWhoHasEndedAndIsStillAtWork)
{
    WindowEvents events;
    int calls = 0;
    WindowEvents::Registration listener;
    listener = events.listen(7, [&](auto const&) {
        ++calls;
        listener = {};
        // As when what it calls waits for the server.
        events.handle(unmapOf(7));
    });
    events.handle(unmapOf(7));
    EXPECT_EQ(calls, 1);
}

TEST(WindowEvents, MayEndAfterTheTable)
{
    WindowEvents::Registration listener;
    {
        WindowEvents events;
        listener = events.listen(7, [](auto const&) {});
    }
}

} // namespace paneweld_tests
