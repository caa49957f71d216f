#include "backends/linux/x11/ServerClock.h"

#include "tests/linux/ConnectionFixture.h"

namespace paneweld_tests {

namespace {

class ServerClockTest : public ConnectionFixture {
protected:
    ServerClockTest() { connection->noteUserTime(longAgo); }

    static constexpr xcb_timestamp_t longAgo = 1;

    backends::ServerClock clock { *connection };
};

} // namespace

TEST_F(ServerClockTest, WhatHasNoTimeIsNowUntilTheServerSaysWhenThatIs)
{
    for (auto const token : { "", "6f0a", "a-b-c_TIME", "a_TIMEx", "a_TIME12x", "a_TIME0", "a_TIME99999999999" }) {
        connection->noteUserTime(longAgo);
        clock.noteUserAct(token);
        EXPECT_EQ(connection->latestUserTime(), xcb_timestamp_t { XCB_CURRENT_TIME }) << token;
        connection->roundTrip();
        EXPECT_GT(connection->latestUserTime(), longAgo) << token;
    }
}

TEST_F(ServerClockTest, ATokenMaySayTheTime)
{
    clock.noteUserAct("panel/app/17-3-host_TIME4711");
    EXPECT_EQ(connection->latestUserTime(), 4711u);
    connection->roundTrip();
    EXPECT_EQ(connection->latestUserTime(), 4711u);
}

TEST_F(ServerClockTest, WhatTheUserDidMeanwhileHasItsOwnTime)
{
    constexpr xcb_timestamp_t pressed = 5;
    clock.noteUserAct("");
    connection->noteUserTime(pressed);
    connection->roundTrip();
    EXPECT_EQ(connection->latestUserTime(), pressed);
}

} // namespace paneweld_tests
