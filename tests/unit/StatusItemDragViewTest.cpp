#include "iOS/StatusItemDragView.h"
#include "platform/appkit/NSEvent.h"
#include "tests/support/World.h"

using namespace paneweld;
using platform::EventType;
using platform::List;
using platform::NSDragOperation;
using platform::URL;

namespace {

class StatusItemDrag : public World {
protected:
    using Lines = std::vector<std::string>;
    using Drops = std::vector<std::vector<URL>>;

    bool drop(std::optional<List> contents)
    {
        backends::MemoryPasteboard pasteboard(std::move(contents));
        backends::MemoryDrag drag(pasteboard);
        return view->performDragOperation(drag);
    }

    void hearDrops()
    {
        view->onDropped = [this](std::vector<URL> const& urls) { drops.push_back(urls); };
    }

    URL const first = *URL::fromString("file:///home/ada/b.txt");
    URL const second = *URL::fromString("file:///home/ada/a.txt");
    std::shared_ptr<StatusItemDragView> view
        = std::make_shared<StatusItemDragView>(world, platform::Rect { 1, 2, 3, 4 });
    Drops drops;
};

using StatusItemDragDeathTest = StatusItemDrag;

} // namespace

TEST_F(StatusItemDrag, TakesFilesAndAddressesInThisOrder)
{
    EXPECT_EQ(view->registeredDraggedTypes(), (Lines { "public.file-url", "public.url" }));
    EXPECT_EQ(view->frame(), (platform::Rect { 1, 2, 3, 4 }));
    EXPECT_FALSE(view->onDropped || view->onLeftClick || view->onRightClick);
}

TEST_F(StatusItemDrag, WhateverIsDraggedShowsTheCopyCursor)
{
    for (auto const& contents : { std::optional<List>(), std::optional(List {}), std::optional(List { "text" }),
             std::optional(List { first }) }) {
        backends::MemoryPasteboard pasteboard(contents);
        backends::MemoryDrag drag(pasteboard);
        EXPECT_EQ(view->draggingEntered(drag), NSDragOperation::Copy);
    }
    EXPECT_EQ(static_cast<int>(NSDragOperation::Copy), 1);
    EXPECT_TRUE(log().empty());
}

TEST_F(StatusItemDrag, TwoFilesComeInOneCallInTheirOrder)
{
    hearDrops();
    EXPECT_TRUE(drop(List { first, second }));
    EXPECT_EQ(drops, (Drops { { first, second } }));
    EXPECT_TRUE(log().empty());
}

TEST_F(StatusItemDrag, WhatCannotBeReadIsRefusedAndLogged)
{
    hearDrops();
    EXPECT_FALSE(drop(std::nullopt));
    EXPECT_EQ(log(), Lines { "error: empty drag operation" });
    EXPECT_TRUE(drops.empty());
}

TEST_F(StatusItemDrag, OneThingThatIsNoURLSpoilsTheWholeDrop)
{
    hearDrops();
    // Text that would make a URL is none.
    EXPECT_FALSE(drop(List { first, "file:///home/ada/a.txt", second }));
    EXPECT_FALSE(drop(List { platform::Value() }));
    EXPECT_EQ(log(), (Lines { "error: empty drag operation", "error: empty drag operation" }));
    EXPECT_TRUE(drops.empty());
}

TEST_F(StatusItemDrag, AnEmptyListIsADropToo)
{
    hearDrops();
    EXPECT_TRUE(drop(List {}));
    EXPECT_EQ(drops, (Drops { {} }));
    EXPECT_TRUE(log().empty());
}

TEST_F(StatusItemDrag, WithNobodyToHearADropIsTakenAllTheSame)
{
    EXPECT_TRUE(drop(List { first }));
    EXPECT_FALSE(drop(std::nullopt));
    EXPECT_EQ(log(), Lines { "error: empty drag operation" });
}

TEST_F(StatusItemDrag, EachButtonOfTheMouseHasItsOwnCall)
{
    int left = 0;
    int right = 0;
    view->onLeftClick = [&] { ++left; };
    view->onRightClick = [&] { ++right; };
    view->mouseDown({ EventType::LeftMouseDown });
    EXPECT_EQ(std::pair(left, right), std::pair(1, 0));
    view->rightMouseDown({ EventType::RightMouseDown });
    EXPECT_EQ(std::pair(left, right), std::pair(1, 1));
}

TEST_F(StatusItemDrag, APressWithNobodyToHearItIsNotPassedOn)
{
    // What lies beneath would count it.
    struct Beneath : platform::NSView {
        void mouseDown(platform::NSEvent const&) override { ++presses; }
        void rightMouseDown(platform::NSEvent const&) override { ++presses; }
        int presses = 0;
    };
    auto const beneath = std::make_shared<Beneath>();
    beneath->addSubview(view, platform::ViewPosition::Above, nullptr);
    beneath->reportMouseDown({ EventType::LeftMouseDown });
    beneath->reportRightMouseDown({ EventType::RightMouseDown });
    EXPECT_EQ(beneath->presses, 0);
    EXPECT_TRUE(log().empty());
    EXPECT_TRUE(ledger().empty());
}

TEST_F(StatusItemDrag, ACallMayLetGoOfTheView)
{
    std::weak_ptr<StatusItemDragView> const weak = view;
    auto const word = std::make_shared<std::string>("still here");
    std::string heard;
    view->onDropped = [&, word](auto const&) {
        view = nullptr;
        heard = *word;
    };
    EXPECT_TRUE(drop(List { first }));
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(heard, "still here");
}

TEST_F(StatusItemDrag, ACallMayReplaceItself)
{
    hearDrops();
    int clicks = 0;
    view->onLeftClick = [&] {
        ++clicks;
        view->onLeftClick = nullptr;
    };
    view->mouseDown({ EventType::LeftMouseDown });
    view->mouseDown({ EventType::LeftMouseDown });
    EXPECT_EQ(clicks, 1);
}

TEST_F(StatusItemDragDeathTest, ItIsNeverReadFromAnArchive)
{
    EXPECT_DEATH(StatusItemDragView::initWithCoder(), "^fatal error: init\\(coder:\\) has not been implemented\n$");
}
