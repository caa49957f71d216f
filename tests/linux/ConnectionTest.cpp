#include "tests/linux/ConnectionFixture.h"

#include <chrono>

namespace paneweld_tests {

namespace {

constexpr std::chrono::milliseconds moment { 50 };
constexpr std::chrono::seconds ages { 10 };

class ConnectionTest : public ConnectionFixture {
protected:
    ConnectionTest() { connection->roundTrip(); }

    // Asks the server for something; how often it has answered.
    void ask()
    {
        connection->ask<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection->wire()).sequence,
            [this](auto const* reply) { answers += reply != nullptr; });
    }

    int answers = 0;
};

} // namespace

TEST_F(ConnectionTest, ATripInTimeBringsWhatWasAskedBefore)
{
    ask();
    connection->roundTripWithin(ages);
    EXPECT_EQ(answers, 1);
}

TEST_F(ConnectionTest, AServerThatStandsStillIsNotWaitedForAndNothingIsLost)
{
    desktop.pauseServer();
    ask();
    connection->roundTripWithin(moment);
    EXPECT_EQ(answers, 0);
    desktop.resumeServer();
    connection->roundTrip();
    EXPECT_EQ(answers, 1);
    ask();
    connection->roundTripWithin(ages);
    EXPECT_EQ(answers, 2);
}

TEST_F(ConnectionTest, AServerThatGoesEndsTheWait)
{
    desktop.endServer();
    connection->roundTripWithin(ages);
    EXPECT_FALSE(connection->isAlive());
}

} // namespace paneweld_tests
