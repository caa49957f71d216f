#include "iOS/AppKitController.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "tests/linux/DragSource.h"
#include "tests/linux/KeyboardOwner.h"
#include "tests/linux/LinuxTest.h"
#include "tests/linux/TrayStandIn.h"
#include "tests/support/Transcript.h"

#include <memory>
#include <string>
#include <vector>

namespace paneweld_tests {

using namespace paneweld;
using Lines = std::vector<std::string>;

// The whole plug-in with its item in a tray, a user at it, and what the host hears.
class StatusItemOnX : public LinuxTest {
protected:
    void open()
    {
        desktop = std::make_unique<Desktop>();
        desktop->startWindowManager();
        toolkit = std::make_unique<Toolkit>(desktop->display());
        onlooker = std::make_unique<Onlooker>(desktop->display());
        tray = std::make_unique<TrayStandIn>(desktop->display());
        source = std::make_unique<DragSource>(desktop->display());
        user = std::make_unique<KeyboardOwner>(desktop->display());
        installBackend();
        hearEverything();
        controller = AppKitController::create(*backend);
        platform::NotificationCenter::defaultCenter().setTap([this](auto const& notification) {
            if (notification.name.rawValue().starts_with("Paneweld."))
                heard.push_back(Transcript::describe(notification));
        });
        ASSERT_TRUE(pump([&] { return tray->icons().size() == 1 && tray->isViewable(tray->icons()[0]); }));
    }

    bool pump(std::function<bool()> condition)
    {
        return pumpUntil([&] {
            tray->handleEvents();
            source->look();
            return condition();
        });
    }

    void click(int button)
    {
        auto const icon = tray->iconPlace();
        toolkit->movePointer(icon.x + icon.width / 2, icon.y + icon.height / 2);
        toolkit->button(button, true);
        toolkit->button(button, false);
    }

    void strike(xcb_keycode_t key)
    {
        toolkit->press(key);
        toolkit->release(key);
    }

    // It has the keyboard as long as it is open.
    bool isMenuOpen() { return !user->canGrabKeyboard(); }

    // True when the source was told that the drop was taken.
    bool drop()
    {
        auto const icon = tray->icons().at(0);
        source->statuses.clear();
        source->finishes.clear();
        source->enter(icon);
        source->position(icon);
        pump([&] { return !source->statuses.empty(); });
        source->drop(icon);
        pump([&] { return !source->finishes.empty(); });
        return !source->finishes.empty() && (source->finishes[0].flags & 1) != 0;
    }

    std::unique_ptr<TrayStandIn> tray;
    std::unique_ptr<DragSource> source;
    std::unique_ptr<KeyboardOwner> user;
    std::shared_ptr<AppKitController> controller;
    Lines heard;
};

TEST_F(StatusItemOnX, TheLeftButtonAsksForAWindowOrBringsOneForward)
{
    open();
    click(1);
    ASSERT_TRUE(pump([&] { return heard.size() == 1; }));
    EXPECT_TRUE(heard[0].starts_with("Paneweld.OpenNewWindow")) << heard[0];

    auto const panel = show({ .title = WindowIdentifier::create("one", "brainstorm", "One")->encoded() });
    auto const other = show({ .title = "plain" });
    ASSERT_TRUE(pump([&] { return other->isKeyWindow(); }));
    heard.clear();
    click(1);
    ASSERT_TRUE(pump([&] { return panel->isKeyWindow(); }));
    for (auto const& line : heard)
        EXPECT_FALSE(line.starts_with("Paneweld.OpenNewWindow")) << line;
}

TEST_F(StatusItemOnX, TheMenuAsksForWhatIsChosen)
{
    open();
    constexpr xcb_keycode_t downKey = 116, returnKey = 36;
    struct Choice {
        int downs;
        std::string heard;
    };
    for (auto const& [downs, expected] :
        { Choice { 1, "Paneweld.OpenNewWindow" }, Choice { 2, "Paneweld.ForceOpenNewBrainstormWindow" },
            Choice { 3, "Paneweld.OpenSettingsOrOnboarding" }, Choice { 4, "Paneweld.CheckForUpdates" } }) {
        heard.clear();
        click(3);
        ASSERT_TRUE(pump([&] { return isMenuOpen(); }));
        for (int i = 0; i < downs; ++i)
            strike(downKey);
        strike(returnKey);
        ASSERT_TRUE(pump([&] { return heard.size() == 1 && !isMenuOpen(); }));
        EXPECT_TRUE(heard[0].starts_with(expected)) << heard[0];
    }
}

TEST_F(StatusItemOnX, ADropIsAskedToBeImported)
{
    open();
    source->offers = { { "text/uri-list", "file:///tmp/z%20%C3%BC\r\nhttps://example.org/\r\n" } };
    EXPECT_TRUE(drop());
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0], "Paneweld.ImportDroppedURLs urls=(file:///tmp/z%20%C3%BC, https://example.org/)");

    // A list of nothing is a list.
    heard.clear();
    source->offers = { { "text/uri-list", "# nothing\r\n" } };
    EXPECT_TRUE(drop());
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0], "Paneweld.ImportDroppedURLs urls=()");
}

TEST_F(StatusItemOnX, WhatCannotBeReadIsNotTaken)
{
    open();
    source->offers = { { "text/plain", "file:///tmp/a" } };
    EXPECT_FALSE(drop());
    source->offers = { { "text/uri-list", std::nullopt } };
    EXPECT_FALSE(drop());
    EXPECT_EQ(heard, Lines {});
}

TEST_F(StatusItemOnX, ALongListComesWhole)
{
    open();
    std::string list;
    std::size_t count = 0;
    for (; list.size() < 1024 * 1024; ++count)
        list += "file:///tmp/a%20file%20of%20many%20" + std::to_string(count) + "\r\n";
    source->offers = { { "text/uri-list", list } };
    source->manner = DragSource::Manner::Incremental;
    std::size_t received = 0;
    platform::Observation const observation(platform::NotificationCenter::defaultCenter(),
        { NotificationName::importDroppedURLs(), nullptr, {} },
        [&](platform::Notification const& notification) { received = notification.value("urls")->asList()->size(); });
    EXPECT_TRUE(drop());
    EXPECT_EQ(received, count);
}

} // namespace paneweld_tests
