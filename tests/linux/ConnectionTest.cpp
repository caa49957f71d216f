#include "backends/linux/x11/Connection.h"

#include "backends/linux/host/StandardErrorLog.h"
#include "backends/linux/loop/EventLoop.h"
#include "tests/linux/Desktop.h"

#include <chrono>
#include <gtest/gtest.h>

namespace paneweld_tests {

namespace {

constexpr std::chrono::milliseconds moment { 50 };
constexpr std::chrono::seconds ages { 10 };

class ConnectionTest : public testing::Test {
protected:
    ConnectionTest()
        : loop(backends::EventLoop::create().take())
        , connection(backends::Connection::open(desktop.display(), *loop, { log, "test", "x11" }).take())
    {
        connection->start([](auto const&) {}, [] {});
        connection->roundTrip();
    }

    // Asks the server for something; how often it has answered.
    void ask()
    {
        connection->ask<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection->wire()).sequence,
            [this](auto const* reply) { answers += reply != nullptr; });
    }

    Desktop desktop;
    backends::StandardErrorLog log;
    std::unique_ptr<backends::EventLoop> loop;
    std::unique_ptr<backends::Connection> connection;
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
