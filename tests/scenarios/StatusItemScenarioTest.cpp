#include "iOS/AppKitController.h"
#include "tests/support/StatusItemWorld.h"
#include "tests/support/Transcript.h"

using namespace paneweld;
using platform::Seconds;

// What the user does with the status item, in a whole plug-in and with a host that answers.

namespace {

class StatusItemScenario : public StatusItemWorld {
protected:
    void SetUp() override
    {
        installBundle();
        world.ledger().setListener([this](auto const& line) { transcript.addLine(line.text); });
        world.setLogListener([this](auto const& record) {
            transcript.addLine("log " + record.category + " " + nameOf(record.level) + " " + record.message);
        });
        NotificationCenter::defaultCenter().setTap(
            [this](auto const& notification) { transcript.addLine(Transcript::describe(notification)); });
        plugin = AppKitController::create(world);
    }

    void mark(std::string const& text) { transcript.addMark(text); }

    // The host opens a window for a request.
    platform::Observation opens(platform::NotificationName const& name, std::string const& kind)
    {
        return { NotificationCenter::defaultCenter(), { name, nullptr, {} }, [this, kind](auto const&) {
                    auto const window = world.makeWindow(kind, tag(kind, kind + "-1"));
                    window->show();
                    window->becomeKey();
                    windows.push_back(window);
                } };
    }

    void closeAll()
    {
        for (auto const& window : std::exchange(windows, {}))
            window->close();
        world.advance(Seconds { 1 });
    }

    void leftClick()
    {
        button()->leftClick();
        world.advance(Seconds { 1 });
    }

    void choose(std::size_t line)
    {
        button()->rightClick();
        EXPECT_TRUE(button()->choose(line));
        world.advance(Seconds { 1 });
    }

    using NotificationCenter = platform::NotificationCenter;

    Transcript transcript;
    std::vector<std::shared_ptr<backends::MemoryWindow>> windows;
    std::shared_ptr<AppKitController> plugin;
};

} // namespace

TEST_F(StatusItemScenario, ClicksOnTheItem)
{
    auto const opening = opens(NotificationName::openNewWindow(), "brainstorm");
    mark("a click with no window open");
    leftClick();
    mark("another window has the keyboard, and a click");
    auto const settings = world.makeWindow("settings", tag("settings", "s1"));
    settings->show();
    settings->becomeKey();
    leftClick();
    mark("all windows are closed, and a click");
    closeAll();
    leftClick();
    transcript.expectToBe("clicks-on-the-status-item");
}

TEST_F(StatusItemScenario, EachChoiceFromTheMenu)
{
    auto const openingAnyway = opens(NotificationName::forceOpenNewBrainstormWindow(), "brainstorm");
    auto const openingSettings = opens(NotificationName::openSettingsOrOnboarding(), "onboarding");
    mark("a new brainstorm");
    choose(1);
    mark("the window that is there");
    choose(0);
    mark("the host tells that nobody is signed in, and the user signs in");
    post(NotificationName::updateMenuItemTitle(), UpdateMenuItemTitle { false }.userInfo());
    choose(2);
    mark("once more: the window is there");
    choose(2);
    mark("signed in");
    post(NotificationName::updateMenuItemTitle(), UpdateMenuItemTitle { true }.userInfo());
    mark("updates, then the end");
    choose(4);
    choose(6);
    transcript.expectToBe("each-choice-from-the-menu");
}

TEST_F(StatusItemScenario, DropsOnTheItem)
{
    mark("two files");
    drop(urls({ "file:///home/ada/b.txt", "file:///home/ada/a%20b.txt" }));
    mark("a web address");
    drop(urls({ "https://example.org/page" }));
    mark("text, which is no address");
    drop(platform::List { "some words" });
    mark("something that cannot be read");
    drop(std::nullopt);
    mark("a list with nothing in it");
    drop(platform::List {});
    transcript.expectToBe("drops-on-the-status-item");
}
