#include "backends/linux/LinuxApplication.h"
#include "backends/linux/LinuxStatusItem.h"
#include "backends/linux/loop/DisplayTicker.h"
#include "backends/linux/loop/MainQueue.h"
#include "backends/linux/loop/MonotonicClock.h"
#include "backends/linux/x11/X11World.h"
#include "backends/shared/Animator.h"
#include "tests/linux/Desktop.h"
#include "tests/linux/Pump.h"
#include "tests/linux/SessionBus.h"
#include "tests/linux/StatusWatcherStandIn.h"
#include "tests/linux/TrayStandIn.h"
#include "tests/support/CollectedLog.h"

#include <gtest/gtest.h>
#include <memory>

namespace paneweld_tests {

using platform::StatusItemPlace;

namespace {

// An item of its own, with less patience than a desktop needs, and a tray.
class TrayPatienceTest : public ::testing::Test {
protected:
    void start(backends::LinuxStatusItem::Options options)
    {
        world.start([] {});
        options.busAddress = bus.address();
        options.identity = { "app.test", "Test", 1, {} };
        options.x11 = &world;
        item = std::make_unique<backends::LinuxStatusItem>(*loop, std::move(options), log);
        world.tray().setObserver([this] { item->trayDidChange(); });
    }

    bool comesTo(StatusItemPlace wanted)
    {
        auto const turn = [this] {
            loop->dispatch();
            tray.handleEvents();
        };
        return pump({ loop->pollableDescriptor(), tray.descriptor() }, turn, [&] { return item->place() == wanted; });
    }

    Desktop desktop;
    SessionBus bus;
    StatusWatcherStandIn watcher { bus.address() };
    TrayStandIn tray { desktop.display() };
    CollectedLog lines;
    platform::OSLog log { lines, "test", "status" };
    std::unique_ptr<backends::EventLoop> loop = backends::EventLoop::create().take();
    backends::MonotonicClock clock;
    backends::DisplayTicker ticker { *loop, clock };
    backends::MainQueue queue { *loop };
    backends::Animator animator { clock, ticker, queue };
    backends::LinuxApplication application { *loop };
    backends::X11World world { backends::Connection::open(desktop.display(), *loop, log).take(), application, *loop,
        animator, clock, {} };
    std::unique_ptr<backends::LinuxStatusItem> item;
};

} // namespace

TEST_F(TrayPatienceTest, EndsNeverWhereTheItemStaysLongInBetween)
{
    start({ .longStay = platform::Seconds { 0 } });
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
        tray.putOut(tray.icons().at(0));
        ASSERT_TRUE(comesTo(StatusItemPlace::Nowhere));
    }
    ASSERT_TRUE(comesTo(StatusItemPlace::Tray));
    EXPECT_EQ(tray.asked().size(), 6u);
    EXPECT_EQ(watcher.count("Register"), 0);
}

} // namespace paneweld_tests
