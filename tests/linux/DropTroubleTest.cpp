#include "tests/linux/DropFixture.h"

#include <utility>

// Sources that behave badly or go away, and targets that end in the middle.
namespace paneweld_tests {

using Manner = DragSource::Manner;

namespace {

constexpr std::uint32_t accepted = 1;
constexpr platform::Seconds impatience { 0.15 };

} // namespace

class DropTroubleTest : public DropTest {
protected:
    // Whoever comes next is served as if nothing had been.
    void expectNextDropToWork()
    {
        auto const finishes = source->finishes.size();
        source->manner = Manner::AtOnce;
        source->offers = { { "text/uri-list", "file:///next" } };
        dragAndDrop();
        EXPECT_EQ(view->dropped, Texts { "file:///next" });
        ASSERT_EQ(source->finishes.size(), finishes + 1);
        EXPECT_EQ(source->finishes.back().flags & accepted, accepted);
    }
    // Dropped, and asked for its data.
    void dropUntilAsked()
    {
        drag();
        auto const requests = source->requests.size();
        source->drop(window);
        pumpUntil([&] { return source->requests.size() > requests; });
    }
    // Dropped, and no more than a part of its data sent.
    void dropHalf()
    {
        start();
        source->manner = Manner::StopsMidway;
        source->pieceSize = 4;
        drag();
        source->drop(window);
        ASSERT_TRUE(pumpUntil([&] { return source->piecesLeft() == 2; }));
    }
};

TEST_F(DropTroubleTest, SilenceEndsTheWait)
{
    start();
    makeTarget(impatience);
    source->manner = Manner::Silent;
    // One silence is enough, whatever else is offered.
    source->offers.push_back({ "_NETSCAPE_URL", "file:///x" });
    dragAndDrop();
    EXPECT_EQ(source->requests.size(), 1u);
    EXPECT_EQ(view->performed, 1);
    EXPECT_FALSE(view->dropped);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(lines.messages, Texts { "drop lost: the owner of the selection did not answer in time" });
    expectNextDropToWork();
}

TEST_F(DropTroubleTest, ATransferThatStopsMidwayEndsTheWait)
{
    start();
    makeTarget(impatience);
    source->manner = Manner::StopsMidway;
    source->pieceSize = 4;
    dragAndDrop();
    EXPECT_EQ(view->performed, 1);
    EXPECT_FALSE(view->dropped);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    expectNextDropToWork();
}

TEST_F(DropTroubleTest, TooMuchIsRefused)
{
    start();
    makeTarget();
    drag();
    source->manner = Manner::Incremental;
    source->pieceSize = 1 << 20;
    source->offers[0].data = std::string((64u << 20) + 1, '\n');
    source->drop(window);
    ASSERT_TRUE(pumpUntil([&] { return !source->finishes.empty(); }));
    EXPECT_FALSE(view->dropped);
    // It said how much was to come, and nothing of it was taken.
    EXPECT_GT(source->piecesLeft(), 64u);
    EXPECT_EQ(lines.messages, Texts { "drop lost: the data is too large" });
}

TEST_F(DropTroubleTest, ASourceThatDiesOverTheWindowIsForgotten)
{
    start();
    drag();
    source = std::make_unique<DragSource>(desktop->display());
    source->offers = { { "text/uri-list", "file:///next" } };
    settle();
    // A stranger's drop does not take the place of the dead one's.
    source->drop(window);
    settle();
    EXPECT_EQ(view->performed, 0);
    EXPECT_EQ(lines.messages, Texts { "drop lost: it was never dragged here" });
    EXPECT_EQ(source->finishes.size(), 1u);
    expectNextDropToWork();
}

TEST_F(DropTroubleTest, ASourceThatDiesInTheMiddleOfItsDataLeavesNothingToRead)
{
    dropHalf();
    source = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return view->performed == 1; }));
    EXPECT_FALSE(view->dropped);
    EXPECT_EQ(lines.messages, Texts { "drop lost: its source is gone" });
    source = std::make_unique<DragSource>(desktop->display());
    expectNextDropToWork();
}

TEST_F(DropTroubleTest, OnlyTheWindowOfASourceThatDiesIsEnough)
{
    start();
    source->manner = Manner::Silent;
    dropUntilAsked();
    source->destroyWindow();
    ASSERT_TRUE(pumpUntil([&] { return view->performed == 1; }));
    EXPECT_FALSE(view->dropped);
}

TEST_F(DropTroubleTest, ASourceThatLeavesAndIsBackAtOnceIsStillWatched)
{
    start();
    source->manner = Manner::Silent;
    drag();
    settle();
    // Both are there before anything of that has been looked at here.
    source->leave(window);
    dropUntilAsked();
    settle();
    source->destroyWindow();
    ASSERT_TRUE(pumpUntil([&] { return view->performed == 1; }));
    EXPECT_EQ(lines.messages, Texts { "drop lost: its source is gone" });
}

TEST_F(DropTroubleTest, ASourceThatDiesAfterItHandedOverEverythingHasDropped)
{
    start();
    drag();
    source->drop(window);
    // It answers and is gone before anything of that has been looked at here.
    ASSERT_TRUE(pumpUntil([&] {
        connection->roundTrip();
        source->sync();
        source->look();
        return !source->requests.empty();
    }));
    source->sync();
    source = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return view->performed == 1; }));
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/b", "file:///tmp/a" }));
}

TEST_F(DropTroubleTest, WhatElseIsHeardOfASourceStaysHeard)
{
    start();
    auto const maskOf = [&](xcb_window_t asked) {
        std::optional<std::uint32_t> mask;
        auto const cookie = xcb_get_window_attributes(connection->wire(), asked);
        connection->ask<xcb_get_window_attributes_reply_t>(
            cookie.sequence, [&](auto const* reply) { mask = reply->your_event_mask; });
        pumpUntil([&] { return mask.has_value(); });
        return *mask;
    };
    EXPECT_EQ(maskOf(source->window()), 0u);
    drag();
    settle();
    EXPECT_EQ(maskOf(source->window()), std::uint32_t { XCB_EVENT_MASK_STRUCTURE_NOTIFY });
    source->leave(window);
    settle();
    EXPECT_EQ(maskOf(source->window()), 0u);

    // As of a window of this process that somebody else here watches.
    std::uint32_t const ours = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_FOCUS_CHANGE;
    xcb_change_window_attributes(connection->wire(), source->window(), XCB_CW_EVENT_MASK, &ours);
    drag();
    settle();
    EXPECT_EQ(maskOf(source->window()), ours | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    source->leave(window);
    settle();
    EXPECT_EQ(maskOf(source->window()) & ours, ours);
}

TEST_F(DropTroubleTest, NonsenseIsAnsweredWhereItCanBeAndHarmsNobody)
{
    start();
    auto const self = source->window();
    // Without entering.
    source->position(window);
    source->leave(window);
    source->drop(window);
    settle();
    ASSERT_EQ(source->statuses.size(), 1u);
    EXPECT_EQ(source->statuses[0].flags & accepted, 0u);
    ASSERT_EQ(source->finishes.size(), 1u);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    // No window, a window that is none, this very window.
    for (auto const strange : { xcb_window_t { XCB_WINDOW_NONE }, xcb_window_t { 0xFFFFFFFF }, window, self + 99 }) {
        source->tell(window, "XdndEnter", { strange, 5u << 24 | 1, 0, 0, 0 });
        source->tell(window, "XdndPosition", { strange });
        source->tell(window, "XdndDrop", { strange });
        settle();
    }
    // In other versions, and in other formats.
    for (std::uint32_t const version : { 0u, 2u, 6u, 255u }) {
        source->enter(window, version);
        source->position(window);
        settle();
        EXPECT_EQ(source->statuses.back().flags & accepted, 0u);
    }
    source->tell(window, "XdndEnter", { self, 5u << 24 }, 8);
    source->tell(window, "XdndDrop", { self }, 16);
    source->tell(window, "XdndFinished", { self });
    settle();
    EXPECT_FALSE(view->dropped);
    EXPECT_FALSE(lines.messages.empty());
    expectNextDropToWork();
}

TEST_F(DropTroubleTest, OthersCannotMoveOrDropOrEndADrag)
{
    start();
    drag();
    DragSource other(desktop->display());
    other.position(window);
    other.leave(window);
    other.drop(window);
    settle();
    other.look();
    ASSERT_EQ(other.statuses.size(), 1u);
    EXPECT_EQ(other.statuses[0].flags & accepted, 0u);
    ASSERT_EQ(other.finishes.size(), 1u);
    EXPECT_EQ(view->performed, 0);
    source->drop(window);
    ASSERT_TRUE(pumpUntil([&] { return source->finishes.size() == 1; }));
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/b", "file:///tmp/a" }));
}

TEST_F(DropTroubleTest, ASecondDragTakesThePlaceOfTheFirst)
{
    start();
    source->manner = Manner::Silent;
    dropUntilAsked();
    auto const first = std::exchange(source, std::make_unique<DragSource>(desktop->display()));
    expectNextDropToWork();
    EXPECT_EQ(view->performed, 1);
    first->sync();
    first->look();
    ASSERT_EQ(first->finishes.size(), 1u);
    EXPECT_EQ(first->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(lines.messages, Texts { "drop lost: another drag came before its data" });
}

TEST_F(DropTroubleTest, ASecondDropOfTheSameDragIsNone)
{
    start();
    drag();
    source->drop(window);
    source->drop(window);
    source->leave(window);
    ASSERT_TRUE(pumpUntil([&] { return source->finishes.size() == 1; }));
    settle();
    EXPECT_EQ(source->finishes.size(), 1u);
    EXPECT_EQ(view->performed, 1);
    EXPECT_EQ(lines.messages, Texts { "drop lost: it was dropped before, and is being read" });
}

TEST_F(DropTroubleTest, TheTargetMayEndWhileTheViewDecides)
{
    start();
    view->onPerform = [&] { target = nullptr; };
    dragAndDrop();
    EXPECT_EQ(view->performed, 1);
    EXPECT_EQ(source->finishes[0].flags & accepted, accepted);
    settle();
}

TEST_F(DropTroubleTest, TheTargetMayEndWhileTheViewIsEntered)
{
    start();
    view->onEntered = [&] { target = nullptr; };
    drag();
    ASSERT_EQ(source->statuses.size(), 1u);
    source->drop(window);
    settle();
    EXPECT_EQ(view->performed, 0);
}

TEST_F(DropTroubleTest, AMoveWhileTheViewIsEnteredIsNoSecondDrag)
{
    start();
    view->onEntered = [&] {
        view->onEntered = nullptr;
        source->position(window);
        pumpUntil([&] { return source->statuses.size() == 1; });
    };
    source->enter(window);
    source->position(window);
    ASSERT_TRUE(pumpUntil([&] { return source->statuses.size() == 2; }));
    EXPECT_EQ(view->entered, 1);
    EXPECT_EQ(source->statuses[0].flags & accepted, 0u);
    EXPECT_EQ(source->statuses[1].flags & accepted, accepted);
}

TEST_F(DropTroubleTest, TheTargetMayEndWhileDataIsOnItsWay)
{
    dropHalf();
    target = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return source->finishes.size() == 1; }));
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(view->performed, 0);
    EXPECT_EQ(lines.messages, Texts { "drop lost: its target is gone" });
    settle();
    EXPECT_EQ(source->finishes.size(), 1u);
}

TEST_F(DropTroubleTest, AViewThatIsGoneAcceptsNothing)
{
    start();
    view = nullptr;
    drag();
    EXPECT_EQ(source->statuses.back().flags & accepted, 0u);
}

TEST_F(DropTroubleTest, AViewMayGoWhileItsDropIsRead)
{
    start();
    drag();
    source->drop(window);
    view = nullptr;
    ASSERT_TRUE(pumpUntil([&] { return source->finishes.size() == 1; }));
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(lines.messages, Texts { "drop lost: its view is gone" });
}

TEST_F(DropTroubleTest, ADragDuringTheViewsDecisionIsADragOfItsOwn)
{
    start();
    DragSource other(desktop->display());
    other.offers = { { "text/uri-list", "file:///other" } };
    // As under a dialog that runs a loop of its own.
    view->onPerform = [&] {
        view->onPerform = nullptr;
        other.enter(window);
        other.position(window);
        other.drop(window);
        pumpUntil([&] {
            other.look();
            return !other.finishes.empty();
        });
        EXPECT_EQ(view->dropped, Texts { "file:///other" });
    };
    dragAndDrop();
    EXPECT_EQ(view->performed, 2);
    EXPECT_EQ(other.finishes.size(), 1u);
}

} // namespace paneweld_tests
