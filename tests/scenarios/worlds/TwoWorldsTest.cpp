#include "iOS/AppKitController.h"
#include "iOS/NSWindow+Paneweld.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "platform/appkit/NSScreen.h"
#include "tests/support/MemoryStage.h"
#include "tests/support/Transcript.h"
#include "tests/support/X11Stage.h"

#include <chrono>
#include <future>
#include <poll.h>
#include <thread>

using namespace paneweld;
using platform::Rect;

// One script, two worlds: what host and plug-in say to each other, and where the windows end up, is the same.

namespace {

template<typename Stage>
class TwoWorlds : public Stage {
protected:
    void SetUp() override
    {
        this->open();
        controller = AppKitController::create(this->platform());
        platform::NotificationCenter::defaultCenter().setTap([this](auto const& notification) {
            if (notification.name.rawValue().starts_with("Paneweld."))
                lines.push_back(Transcript::describe(notification));
        });
    }

    std::shared_ptr<platform::NSWindow> openTagged(std::string const& type, std::string const& id)
    {
        return this->show(WindowIdentifier::create(id, type, "Title " + id)->encoded());
    }

    void request(std::string const& id, double height, bool animate)
    {
        BrainstormWindowPreferredHeightDidChange payload { id, animate };
        payload.preferredHeight = height;
        payload.maxHeight = 600;
        post(NotificationName::brainstormWindowPreferredHeightDidChange(), payload.userInfo());
    }

    static void post(platform::NotificationName const& name, platform::Dictionary userInfo)
    {
        platform::NotificationCenter::defaultCenter().post({ name, nullptr, std::move(userInfo) });
    }

    int said(std::string const& beginning) const
    {
        return static_cast<int>(
            std::count_if(lines.begin(), lines.end(), [&](auto const& line) { return line.starts_with(beginning); }));
    }

    // The fade-in after a show or a focus is over: only then a request is applied at once.
    void awaitFadeIn(platform::NSWindow& window)
    {
        this->pumpUntil([&] { return window.alphaValue() >= 1; });
        this->settle();
    }

    void expectFrame(platform::NSWindow& window, Rect const& frame)
    {
        this->pumpUntil([&] { return window.frame() == frame; });
        this->settle();
        EXPECT_EQ(window.frame(), frame);
        lines.push_back("frame " + std::to_string(static_cast<int>(frame.width)) + "x"
            + std::to_string(static_cast<int>(frame.height)));
    }

    void expect(std::string const& name)
    {
        Transcript transcript;
        for (auto const& line : lines)
            transcript.addLine(line);
        transcript.expectToBe(name);
    }

    std::shared_ptr<AppKitController> controller;
    std::vector<std::string> lines;
};

using Stages = testing::Types<MemoryStage, X11Stage>;
TYPED_TEST_SUITE(TwoWorlds, Stages);

} // namespace

TYPED_TEST(TwoWorlds, APanelOpensGrowsIsPinnedAndClosesOnEscape)
{
    auto const panel = this->openTagged("brainstorm", "b1");
    this->makeKey(*panel);
    this->awaitFadeIn(*panel);
    EXPECT_EQ(panel->title(), "Title b1");
    auto const area = this->platform().mainScreen()->visibleFrame;
    auto const x = area.midX() - 320;
    auto const y = area.minY() + 84;
    this->expectFrame(*panel, { x, y, 640, 91 });

    this->request("b1", 240, true);
    this->pumpUntil([&] { return this->said("Paneweld.BrainstormWindowDidResize") == 1; });
    this->expectFrame(*panel, { x, y, 640, 240 });
    this->request("b1", 160, false);
    this->expectFrame(*panel, { x, y, 640, 160 });
    this->request("b1", 2000, false);
    this->expectFrame(*panel, { x, y, 640, 600 });

    this->post(NotificationName::brainstormWindowPinStateDidChange(),
        BrainstormWindowPinStateDidChange { "b1", true }.userInfo());
    EXPECT_EQ(panel->level(), platform::windowLevelFloating);

    this->settle();
    EXPECT_FALSE(this->pressEscape());
    this->pumpUntil([&] { return !panel->isVisible(); });
    this->request("b1", 300, false);
    this->settle();
    this->expect("worlds-panel");
}

TYPED_TEST(TwoWorlds, EveryKindGetsItsFirstFrame)
{
    auto const app = this->openTagged("iOSApp", "a1");
    auto const settings = this->openTagged("settings", "s1");
    auto const onboarding = this->openTagged("onboarding", "o1");
    auto const area = this->platform().mainScreen()->visibleFrame;
    this->expectFrame(*app, { area.midX() - 450, area.midY() - 350, 900, 700 });
    EXPECT_EQ(settings->title(), "Title s1");
    EXPECT_EQ(onboarding->title(), "Title o1");
    EXPECT_EQ(settings->frame().size(), (platform::Size { 400, 300 }));
    EXPECT_EQ(onboarding->frame().size(), (platform::Size { 400, 300 }));
    this->expect("worlds-kinds");
}

TYPED_TEST(TwoWorlds, ARequestFromInsideAReportIsApplied)
{
    auto const panel = this->openTagged("brainstorm", "b1");
    this->makeKey(*panel);
    this->awaitFadeIn(*panel);
    bool hasAsked = false;
    platform::Observation const will(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowWillResize(), nullptr, {} }, [&](auto const&) {
            if (!std::exchange(hasAsked, true))
                this->request("b1", 400, true);
        });
    this->request("b1", 300, true);
    this->pumpUntil([&] { return this->said("Paneweld.BrainstormWindowDidResize") == 2; });
    EXPECT_EQ(panel->frame().height, 400);
    this->expect("worlds-request-from-report");
}

TYPED_TEST(TwoWorlds, AWindowClosedFromInsideAReportStillEndsItsReports)
{
    auto const panel = this->openTagged("brainstorm", "b1");
    this->makeKey(*panel);
    this->awaitFadeIn(*panel);
    platform::Observation const will(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowWillResize(), nullptr, {} }, [&](auto const&) { panel->close(); });
    this->request("b1", 300, true);
    this->pumpUntil([&] { return this->said("Paneweld.BrainstormWindowDidResize") == 1; });
    this->pumpUntil([&] { return !panel->isVisible(); });
    this->expect("worlds-closed-from-report");
}

TYPED_TEST(TwoWorlds, AWindowOpenedFromInsideAReportIsStyledAndBothGoOn)
{
    auto const panel = this->openTagged("brainstorm", "b1");
    this->makeKey(*panel);
    this->awaitFadeIn(*panel);
    std::shared_ptr<platform::NSWindow> other;
    platform::Observation const did(platform::NotificationCenter::defaultCenter(),
        { NotificationName::brainstormWindowDidResize(), nullptr, {} }, [&](auto const&) {
            if (!other)
                other = this->openTagged("settings", "s1");
        });
    this->request("b1", 300, false);
    this->pumpUntil([&] { return other && other->isVisible(); });
    EXPECT_EQ(panel->frame().height, 300);
    EXPECT_TRUE(isSettings(*other));
}

namespace {

class StoppedServer : public TwoWorlds<X11Stage> { };

} // namespace

// A server that stands still answers nothing: whoever waits for it on a notification's road hangs here.
TEST_F(StoppedServer, NoRequestOfTheHostWaitsForAnAnswer)
{
    auto const panel = openTagged("brainstorm", "b1");
    awaitFadeIn(*panel);
    desktop->pauseServer();
    std::promise<void> done;
    bool wasStuck = false;
    std::thread watchdog([&, isDone = done.get_future()] {
        wasStuck = isDone.wait_for(std::chrono::seconds(10)) == std::future_status::timeout;
        desktop->resumeServer();
    });
    request("b1", 300, false);
    request("b1", 200, true);
    post(NotificationName::brainstormWindowPinStateDidChange(),
        BrainstormWindowPinStateDidChange { "b1", true }.userInfo());
    // The whole animation, its reports included, goes by without the server.
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (said("Paneweld.BrainstormWindowDidResize") < 2 && std::chrono::steady_clock::now() < end) {
        pollfd wait { backend->pollableDescriptor(), POLLIN, 0 };
        poll(&wait, 1, 100);
        backend->dispatch();
    }
    panel->close();
    backend->dispatch();
    done.set_value();
    watchdog.join();
    EXPECT_FALSE(wasStuck);
    EXPECT_EQ(said("Paneweld.BrainstormWindowDidResize"), 2);
    // Once it goes on, all of it has been heard.
    pumpUntil([&] { return !panel->isVisible(); });
}
