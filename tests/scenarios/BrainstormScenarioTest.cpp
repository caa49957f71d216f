#include "iOS/AppKitController.h"
#include "tests/support/Transcript.h"
#include "tests/support/World.h"

using namespace paneweld;
using platform::Seconds;

// Whole flows in the memory world, compared line by line.

namespace {

class BrainstormScenario : public World {
protected:
    void SetUp() override
    {
        controller = AppKitController::create(world);
        world.ledger().setListener([this](auto const& line) { transcript.add(line.time.count(), line.text); });
        world.setLogListener([this](auto const& record) {
            add("log " + record.category + " " + nameOf(record.level) + " " + record.message);
        });
        platform::NotificationCenter::defaultCenter().setTap(
            [this](auto const& notification) { add(Transcript::describe(notification)); });
    }

    void add(std::string const& line) { transcript.add(world.clock().now().count(), line); }
    void mark(std::string const& text) { transcript.addMark(text); }

    void request(double height)
    {
        BrainstormWindowPreferredHeightDidChange payload { "b1" };
        payload.preferredHeight = height;
        payload.maxHeight = 600;
        post(NotificationName::brainstormWindowPreferredHeightDidChange(), payload.userInfo());
    }

    void expect(std::string const& name) { transcript.expectToBe(name); }

    Transcript transcript; // hears the plug-in out, so it is there until after that
    std::shared_ptr<AppKitController> controller;
};

} // namespace

TEST_F(BrainstormScenario, FromOpenToEscape)
{
    mark("the host opens a brainstorm window");
    auto const panel = world.makeWindow("panel", tag("brainstorm", "b1", "Ideas"));
    panel->show();
    panel->becomeKey();
    world.advance(Seconds { 1 });
    mark("two ideas are typed");
    request(160);
    world.advance(Seconds { 1 });
    request(229);
    world.advance(Seconds { 1 });
    mark("the panel is pinned, another window gets the keyboard");
    post(NotificationName::brainstormWindowPinStateDidChange(),
        BrainstormWindowPinStateDidChange { "b1", true }.userInfo());
    auto const settings = world.makeWindow("settings", tag("settings", "s1", "Settings"));
    settings->show();
    settings->becomeKey();
    world.pressKey(platform::keyCodeEscape);
    mark("back in the panel, Escape");
    panel->becomeKey();
    world.advance(Seconds { 1 });
    world.pressKey(platform::keyCodeEscape);
    world.advance(Seconds { 1 });
    expect("from-open-to-escape");
}

TEST_F(BrainstormScenario, EveryKindOfWindow)
{
    for (auto const* const kind : { "iOSApp", "onboarding", "settings", "inspector" }) {
        mark(kind);
        auto const window = world.makeWindow(kind, tag(kind, std::string(kind) + "-1", "Title"), { 0, 0, 500, 400 });
        window->show();
        window->becomeKey();
        window->close();
        world.advance(Seconds { 1 });
    }
    mark("a window of no kind");
    auto const about = world.makeWindow("about", "About");
    about->show();
    about->close();
    expect("every-kind-of-window");
}

TEST_F(BrainstormScenario, LiveResizeHoldsTheHostBack)
{
    auto const panel = world.makeWindow("panel", tag("brainstorm", "b1", "Ideas"));
    panel->show();
    world.advance(Seconds { 1 });
    mark("the user drags, the host asks meanwhile");
    panel->startLiveResize();
    request(300);
    request(350);
    world.advance(Seconds { 1 });
    panel->endLiveResize({ 320, 84, 700, 200 });
    world.advance(Seconds { 1 });
    expect("live-resize-holds-the-host-back");
}

TEST_F(BrainstormScenario, FromTheShortcutToAPanel)
{
    constexpr std::uint32_t n = 45, controlAndOption = 0x1800;
    auto const& update = NotificationName::updateGlobalNewBrainstormShortcut();
    platform::Observation const host(platform::NotificationCenter::defaultCenter(),
        { NotificationName::globalNewBrainstormShortcutTriggered(), nullptr, {} },
        [this](auto const&) { world.makeWindow("panel", tag("brainstorm", "b1", "Ideas"))->show(); });
    mark("the host tells its setting");
    post(update, UpdateGlobalNewBrainstormShortcut { n, controlAndOption, true }.userInfo());
    mark("the user presses it in another application");
    world.hotKeys().press(n, controlAndOption);
    world.advance(Seconds { 1 });
    world.hotKeys().release(n, controlAndOption);
    mark("the user records another one: the old one is off meanwhile");
    post(update, UpdateGlobalNewBrainstormShortcut { n, controlAndOption, false }.userInfo());
    world.hotKeys().press(n, controlAndOption);
    post(update, UpdateGlobalNewBrainstormShortcut { 49, controlAndOption, true }.userInfo());
    expect("from-the-shortcut-to-a-panel");
}
