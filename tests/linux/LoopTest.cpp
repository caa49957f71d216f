#include "backends/linux/loop/DisplayTicker.h"
#include "backends/linux/loop/EventLoop.h"
#include "backends/linux/loop/MainQueue.h"
#include "backends/linux/loop/MonotonicClock.h"
#include "backends/linux/loop/SerialQueue.h"
#include "backends/linux/loop/WallTimer.h"
#include "tests/linux/LinuxTest.h"

#include "platform/appkit/NSAnimationContext.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <future>
#include <poll.h>
#include <pthread.h>
#include <set>
#include <thread>
#include <unistd.h>

namespace paneweld_tests {

using backends::EventLoop;
using backends::LoopSource;
using platform::Seconds;

namespace {

bool isReadable(int descriptor, int milliseconds)
{
    pollfd wait { descriptor, POLLIN, 0 };
    return poll(&wait, 1, milliseconds) > 0;
}

} // namespace

class Loop : public ::testing::Test {
protected:
    // False when it does not come true under the watchdog.
    bool runUntil(std::function<bool()> condition)
    {
        while (!condition()) {
            if (!isReadable(loop->pollableDescriptor(), 5000))
                return false;
            loop->dispatch();
        }
        return true;
    }

    std::unique_ptr<EventLoop> loop = EventLoop::create().take();
    backends::MonotonicClock clock;
};

TEST_F(Loop, WhatIsSoonRunsOnceInOrderUnlessItIsDropped)
{
    std::vector<int> order;
    auto const first = loop->soon([&] { order.push_back(1); });
    auto dropped = loop->soon([&] { order.push_back(2); });
    auto const last = loop->soon([&] { order.push_back(3); });
    dropped.end();
    ASSERT_TRUE(runUntil([&] { return order.size() == 2; }));
    loop->dispatch();
    EXPECT_EQ(order, (std::vector<int> { 1, 3 }));
    EXPECT_FALSE(isReadable(loop->pollableDescriptor(), 20));
}

TEST_F(Loop, WorkRunsInOrderAndWorkOfWorkInTheNextTurn)
{
    backends::MainQueue queue(*loop);
    std::vector<int> order;
    queue.async([&] {
        order.push_back(1);
        queue.async([&] { order.push_back(3); });
    });
    queue.async([&] { order.push_back(2); });
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(isReadable(loop->pollableDescriptor(), 0));
    loop->dispatch();
    EXPECT_EQ(order, (std::vector<int> { 1, 2, 3 }));
    EXPECT_FALSE(isReadable(loop->pollableDescriptor(), 0));
}

TEST_F(Loop, WorkThatNeverEndsDoesNotStarveTheHost)
{
    backends::MainQueue queue(*loop);
    int rounds = 0;
    std::function<void()> again = [&] {
        ++rounds;
        queue.async(again);
    };
    queue.async(again);
    loop->dispatch();
    EXPECT_GT(rounds, 10);
    EXPECT_LT(rounds, 1000);
    EXPECT_TRUE(isReadable(loop->pollableDescriptor(), 0));
    auto const before = rounds;
    loop->dispatch();
    EXPECT_GT(rounds, before);
}

TEST_F(Loop, WorkFromAnotherThreadWakesTheWaiting)
{
    backends::MainQueue queue(*loop);
    auto const mainThread = std::this_thread::get_id();
    std::atomic<int> done = 0;
    std::thread::id ranOn;
    std::thread other([&] {
        for (int i = 0; i < 1000; ++i) {
            queue.async([&] {
                ++done;
                ranOn = std::this_thread::get_id();
            });
        }
    });
    EXPECT_TRUE(runUntil([&] { return done == 1000; }));
    other.join();
    EXPECT_EQ(ranOn, mainThread);
}

// A wake-up that is lost once is lost for good, so the last one of many tells of all.
TEST_F(Loop, NoWakeUpIsLostAmongManyThreads)
{
    backends::MainQueue queue(*loop);
    constexpr int threads = 4, pieces = 5000;
    std::atomic<int> done = 0;
    std::vector<std::thread> others;
    for (int i = 0; i < threads; ++i)
        others.emplace_back([&] {
            for (int k = 0; k < pieces; ++k) {
                queue.async([&] { ++done; });
                std::this_thread::yield();
            }
        });
    EXPECT_TRUE(runUntil([&] { return done == threads * pieces; }));
    for (auto& other : others)
        other.join();
    // And afterwards one is heard.
    queue.async([&] { ++done; });
    EXPECT_TRUE(isReadable(loop->pollableDescriptor(), 0));
}

TEST_F(Loop, ANestedLoopInsideAHandlerGoesOn)
{
    backends::MainQueue queue(*loop);
    std::vector<std::string> order;
    queue.async([&] {
        order.push_back("outer begins");
        queue.async([&] { order.push_back("inner"); });
        auto const timer = loop->after(Seconds { 0.001 }, [&] { order.push_back("timer"); });
        EXPECT_TRUE(runUntil([&] { return order.size() == 3; }));
        order.push_back("outer ends");
    });
    loop->dispatch();
    EXPECT_EQ(order, (std::vector<std::string> { "outer begins", "inner", "timer", "outer ends" }));
}

TEST_F(Loop, ASourceMayBeDroppedByItsOwnHandler)
{
    std::array<int, 2> ends {};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    int calls = 0;
    LoopSource source;
    source = loop->whenReadable(ends[0], [&] {
        ++calls;
        source.end();
    });
    EXPECT_TRUE(runUntil([&] { return calls == 1; }));
    // Still readable, and nobody cares any more.
    EXPECT_FALSE(isReadable(loop->pollableDescriptor(), 0));
    loop->dispatch();
    EXPECT_EQ(calls, 1);
    close(ends[0]);
    close(ends[1]);
}

TEST_F(Loop, ASourceThatAnotherHandlerDropsIsNotCalled)
{
    int calls = 0;
    LoopSource first;
    LoopSource second;
    auto const now = clock.now();
    first = loop->at(now, [&] {
        ++calls;
        second.end();
    });
    second = loop->at(now, [&] {
        ++calls;
        first.end();
    });
    EXPECT_TRUE(runUntil([&] { return calls > 0; }));
    loop->dispatch();
    EXPECT_EQ(calls, 1);
}

TEST_F(Loop, ATimerAddedOutsideDispatchFiresInTimeAndOnce)
{
    int calls = 0;
    auto const begin = clock.now();
    Seconds fired {};
    auto const timer = loop->after(Seconds { 0.02 }, [&] {
        ++calls;
        fired = clock.now();
    });
    EXPECT_TRUE(runUntil([&] { return calls == 1; }));
    EXPECT_GE((fired - begin).count(), 0.02);
    // The library's own idea of lateness is a quarter of a second.
    EXPECT_LT((fired - begin).count(), 0.2);
    EXPECT_FALSE(isReadable(loop->pollableDescriptor(), 30));
    EXPECT_EQ(calls, 1);
}

TEST_F(Loop, AWallTimerFiresOnceAfterItsTimeAndMayBeDroppedByItsWork)
{
    std::vector<std::string> fired;
    auto const begin = clock.now();
    std::unique_ptr<backends::WallTimer> later, never;
    backends::WallTimer const atOnce(*loop, Seconds { 0 }, [&] { fired.emplace_back("at once"); });
    later = std::make_unique<backends::WallTimer>(*loop, Seconds { 0.03 }, [&] {
        fired.emplace_back("later");
        EXPECT_GE((clock.now() - begin).count(), 0.03);
        later.reset();
    });
    never = std::make_unique<backends::WallTimer>(*loop, Seconds { 0.01 }, [&] { fired.emplace_back("never"); });
    backends::WallTimer const tomorrow(*loop, Seconds { 86400 }, [&] { fired.emplace_back("tomorrow"); });
    never.reset();
    EXPECT_TRUE(runUntil([&] { return !later; }));
    EXPECT_EQ(fired, (std::vector<std::string> { "at once", "later" }));
    EXPECT_FALSE(isReadable(loop->pollableDescriptor(), 30));
}

TEST_F(Loop, TheTickerKeepsTheBeatAndStandsStillWhenStopped)
{
    backends::DisplayTicker ticker(*loop, clock);
    EXPECT_NEAR(ticker.refreshRate(), 60, 0.001);
    ticker.setRefreshRate(0);
    EXPECT_NEAR(ticker.refreshRate(), 60, 0.001);
    ticker.setRefreshRate(200);
    EXPECT_NEAR(ticker.refreshRate(), 200, 0.001);
    int ticks = 0;
    auto const begin = clock.now();
    ticker.start([&] {
        if (++ticks == 20)
            ticker.stop();
    });
    EXPECT_TRUE(runUntil([&] { return ticks == 20; }));
    EXPECT_GE((clock.now() - begin).count(), 20 / 200.0);
    loop->dispatch();
    EXPECT_FALSE(isReadable(loop->pollableDescriptor(), 50));
    EXPECT_EQ(ticks, 20);
}

TEST_F(Loop, EveryDescriptorIsCloseOnExec) { EXPECT_TRUE(fcntl(loop->pollableDescriptor(), F_GETFD) & FD_CLOEXEC); }

TEST(SerialQueue, RunsInOrderOnOneThreadAndFinishesBeforeItEnds)
{
    std::vector<int> order;
    std::set<std::thread::id> threads;
    {
        backends::SerialQueue queue("a queue with a long name");
        for (int i = 0; i < 100; ++i) {
            queue.async([&, i] {
                order.push_back(i);
                threads.insert(std::this_thread::get_id());
            });
        }
    }
    ASSERT_EQ(order.size(), 100u);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_FALSE(threads.contains(std::this_thread::get_id()));
}

TEST(SerialQueue, LeavesSignalsToTheHostAndKnowsItself)
{
    static int const key = 0;
    auto const mark = std::make_shared<int>(7);
    std::promise<std::pair<bool, bool>> answer;
    backends::SerialQueue queue("marked");
    queue.setSpecific(&key, mark);
    queue.async([&] {
        sigset_t blocked {};
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        answer.set_value({ sigismember(&blocked, SIGCHLD) == 1, platform::Queue::currentSpecific(&key) == mark });
    });
    auto const [isBlocked, isMarked] = answer.get_future().get();
    EXPECT_TRUE(isBlocked);
    EXPECT_TRUE(isMarked);
}

TEST(SerialQueue, MayEndOnItsOwnThread)
{
    std::promise<void> done;
    auto* const queue = new backends::SerialQueue("last one");
    queue->async([&, queue] {
        delete queue;
        done.set_value();
    });
    EXPECT_EQ(done.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
}

class Idle : public LinuxTest { };

TEST_F(Idle, NothingWakesUs)
{
    start(With::WindowManagerAndCompositor);
    auto const shown = show({ .title = "idle" });
    stylePanel(*shown);
    shown->setContentMinSize({ 640, 91 });
    shown->setAlphaValue(1);
    bool hasEnded = false;
    backend->animationContext().runAnimationGroup(
        [&](auto&) {
            shown->animator().setFrame({ 320, 84, 640, 400 }, platform::Display::Yes);
        },
        [&] { hasEnded = true; });
    ASSERT_TRUE(pumpUntil([&] { return hasEnded; }));
    // What the last change still brings, answers included, is over in half a second.
    pumpFor(std::chrono::milliseconds(600));
    EXPECT_FALSE(isReadable(backend->pollableDescriptor(), 1500));
    // Clicks elsewhere are ours only as long as a window of ours can be dragged.
    toolkit->withdraw(xid(shown));
    ASSERT_TRUE(pumpUntil([&] { return count("close idle") == 1; }));
    pumpFor(std::chrono::milliseconds(100));
    // A button for which the window manager has no use.
    onlooker->movePointer(1270, 790);
    onlooker->button(8, true);
    onlooker->button(8, false);
    EXPECT_FALSE(isReadable(backend->pollableDescriptor(), 200));
}

TEST_F(Idle, StartingIsQuick)
{
    Desktop server;
    backends::MonotonicClock clock;
    backends::LinuxOptions options;
    options.display = server.display();
    auto const begin = clock.now();
    auto made = backends::makeLinuxPlatform(options);
    auto const duration = clock.now() - begin;
    ASSERT_TRUE(made.hasValue());
    EXPECT_EQ(made.value()->windowReach(), backends::WindowReach::X11);
    RecordProperty("milliseconds", std::to_string(duration.count() * 1000));
    // Waiting for any service that does not answer would take seconds.
    EXPECT_LT(duration.count(), 1);
}

} // namespace paneweld_tests
