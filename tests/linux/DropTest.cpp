#include "tests/linux/DropFixture.h"

namespace paneweld_tests {

using platform::NSDragOperation;
using Manner = DragSource::Manner;

namespace {

constexpr std::uint32_t accepted = 1;

// More than a mebibyte of addresses.
std::string longList(int count)
{
    std::string list;
    for (int i = 0; i < count; ++i)
        list += "file:///home/ada/pictures/of%20the%20sea/" + std::to_string(i) + ".jpeg\r\n";
    return list;
}

} // namespace

TEST_F(DropTest, AnnouncesItselfAsLongAsItIsThere)
{
    start();
    EXPECT_EQ(source->words(window, "XdndAware"), std::vector<std::uint32_t> { 5 });
    target = nullptr;
    settle();
    EXPECT_FALSE(source->words(window, "XdndAware"));
}

TEST_F(DropTest, AsksTheViewOnceAndAnswersEveryMove)
{
    start();
    source->enter(window);
    settle();
    EXPECT_EQ(view->entered, 0);
    for (int i = 0; i < 3; ++i)
        source->position(window);
    settle();
    EXPECT_EQ(view->entered, 1);
    ASSERT_EQ(source->statuses.size(), 3u);
    for (auto const& status : source->statuses) {
        EXPECT_EQ(status.from, window);
        EXPECT_EQ(status.flags & accepted, accepted);
        EXPECT_EQ(status.action, copyAction());
    }
    source->leave(window);
    drag();
    EXPECT_EQ(view->entered, 2);
    EXPECT_EQ(view->performed, 0);
}

TEST_F(DropTest, ShowsThatTheViewWantsNothing)
{
    start();
    view->answer = NSDragOperation::None;
    drag();
    ASSERT_EQ(source->statuses.size(), 1u);
    EXPECT_EQ(source->statuses[0].flags & accepted, 0u);
    EXPECT_EQ(source->statuses[0].action, XCB_ATOM_NONE);
    // One that drops all the same learns that nothing came of it.
    source->drop(window);
    settle();
    ASSERT_EQ(source->finishes.size(), 1u);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(view->performed, 0);
    EXPECT_EQ(lines.messages, Texts { "drop lost: it was dropped although it was not accepted" });
}

TEST_F(DropTest, HandsOverTheFilesInTheirOrder)
{
    start();
    dragAndDrop();
    EXPECT_EQ(view->performed, 1);
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/b", "file:///tmp/a" }));
    EXPECT_EQ(source->finishes[0].from, window);
    EXPECT_EQ(source->finishes[0].flags & accepted, accepted);
    EXPECT_EQ(source->finishes[0].action, copyAction());
    EXPECT_EQ(source->requestTimes, std::vector<xcb_timestamp_t> { source->dropTime });
    EXPECT_EQ(connection->latestUserTime(), source->dropTime);
    EXPECT_TRUE(lines.messages.empty());
}

TEST_F(DropTest, TellsARefusalOfTheView)
{
    start();
    view->isAccepting = false;
    dragAndDrop();
    EXPECT_EQ(view->performed, 1);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(source->finishes[0].action, XCB_ATOM_NONE);
}

TEST_F(DropTest, TellsOlderSourcesNoMoreThanTheyKnow)
{
    start();
    for (std::uint32_t const version : { 3u, 4u }) {
        dragAndDrop(version);
        EXPECT_EQ(source->finishes.back().flags, 0u);
        EXPECT_EQ(source->finishes.back().action, XCB_ATOM_NONE);
        EXPECT_EQ(view->dropped, (Texts { "file:///tmp/b", "file:///tmp/a" }));
    }
    EXPECT_EQ(view->performed, 2);
}

TEST_F(DropTest, FindsTheListAmongManyTypes)
{
    start();
    auto const list = source->offers[0];
    source->offers.clear();
    for (int i = 0; i < 2000; ++i)
        source->offers.push_back({ "application/x-" + std::to_string(i), "x" });
    source->offers.push_back(list);
    // The drop comes before the types could be asked for.
    source->enter(window);
    source->position(window);
    source->drop(window);
    ASSERT_TRUE(pumpUntil([&] { return source->finishes.size() == 1; }));
    EXPECT_EQ(source->requests, Texts { "text/uri-list" });
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/b", "file:///tmp/a" }));
}

TEST_F(DropTest, TakesTheFirstTypesWhereTheListOfThemIsMissing)
{
    start();
    source->offers.resize(5, { "text/plain", "x" });
    source->hidesTypeList = true;
    dragAndDrop();
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/b", "file:///tmp/a" }));
}

TEST_F(DropTest, PrefersTheTypeThatHasAllFiles)
{
    start();
    source->offers
        = { { "_NETSCAPE_URL", "file:///1\n1" }, { "text/x-moz-url", std::string("f\0i\0l\0e\0:\0/\0/\0/\0002\0", 18) },
              { "text/uri-list;charset=utf-8", "file:///3" }, { "text/uri-list", "file:///4" } };
    for (auto const* const file : { "file:///4", "file:///3", "file:///2", "file:///1" }) {
        dragAndDrop();
        EXPECT_EQ(view->dropped, Texts { file });
        source->offers.pop_back();
    }
}

TEST_F(DropTest, TriesTheNextTypeWhereOneCannotBeRead)
{
    start();
    source->offers = { { "text/uri-list", std::nullopt }, { "text/x-moz-url", std::string("h\0x", 3) },
        { "_NETSCAPE_URL", "file:///1" } };
    dragAndDrop();
    EXPECT_EQ(source->requests, (Texts { "text/uri-list", "text/x-moz-url", "_NETSCAPE_URL" }));
    EXPECT_EQ(view->dropped, Texts { "file:///1" });
    EXPECT_TRUE(lines.messages.empty());
}

TEST_F(DropTest, OfTextIsShownAsACopyAndReadAsNothing)
{
    start();
    source->offers = { { "text/plain", "file:///tmp/a" }, { "UTF8_STRING", "file:///tmp/a" } };
    dragAndDrop();
    EXPECT_EQ(source->statuses[0].flags & accepted, accepted);
    EXPECT_EQ(source->requests, Texts {});
    EXPECT_EQ(view->performed, 1);
    EXPECT_FALSE(view->dropped);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(lines.messages, Texts { "drop lost: no addresses are offered" });
}

TEST_F(DropTest, WhoseDataIsRefusedIsReadAsNothing)
{
    start();
    source->offers = { { "text/uri-list", std::nullopt } };
    dragAndDrop();
    EXPECT_EQ(view->performed, 1);
    EXPECT_FALSE(view->dropped);
    EXPECT_EQ(source->finishes[0].flags & accepted, 0u);
    EXPECT_EQ(lines.messages, Texts { "drop lost: the owner of the selection refused" });
}

TEST_F(DropTest, WhoseSelectionHasNoOwnerIsReadAsNothing)
{
    start();
    drag();
    source->disown();
    source->drop(window);
    ASSERT_TRUE(pumpUntil([&] { return source->finishes.size() == 1; }));
    EXPECT_EQ(view->performed, 1);
    EXPECT_FALSE(view->dropped);
}

TEST_F(DropTest, WhoseDataIsNoTextIsReadAsNothing)
{
    start();
    source->manner = Manner::InWords;
    dragAndDrop();
    EXPECT_FALSE(view->dropped);
    source->manner = Manner::EmptyHanded;
    dragAndDrop();
    EXPECT_FALSE(view->dropped);
    source->manner = Manner::AtOnce;
    source->offers = { { "text/x-moz-url", std::string("h\0x", 3) } };
    dragAndDrop();
    EXPECT_FALSE(view->dropped);
    EXPECT_EQ(view->performed, 3);
    EXPECT_EQ(lines.messages,
        (Texts { "drop lost: the data is not in bytes", "drop lost: the data is not in bytes",
            "drop lost: the addresses cannot be decoded" }));
}

TEST_F(DropTest, OfAListThatNamesNothingIsReadAsAnEmptyList)
{
    start();
    for (auto const manner : { Manner::AtOnce, Manner::Incremental }) {
        source->manner = manner;
        for (auto const* const list : { "", "# nothing\r\n", "no address\r\n" }) {
            source->offers = { { "text/uri-list", list } };
            dragAndDrop();
            EXPECT_EQ(view->dropped, Texts {});
            EXPECT_EQ(source->finishes.back().flags & accepted, accepted);
        }
    }
    EXPECT_TRUE(lines.messages.empty());
}

TEST_F(DropTest, FetchesALongListBeforeTheViewIsAsked)
{
    start();
    constexpr int count = 20000;
    source->offers = { { "text/uri-list", longList(count) } };
    ASSERT_GT(source->offers[0].data->size(), std::size_t { 1 << 20 });
    for (auto const manner : { Manner::AtOnce, Manner::Incremental }) {
        source->manner = manner;
        view->dropped.reset();
        dragAndDrop();
        ASSERT_TRUE(view->dropped);
        EXPECT_EQ(view->dropped->size(), std::size_t { count });
        EXPECT_EQ(view->dropped->back(), "file:///home/ada/pictures/of%20the%20sea/19999.jpeg");
    }
    EXPECT_EQ(source->piecesLeft(), 0u);
}

TEST_F(DropTest, KeepsFileNamesThatAreNoText)
{
    start();
    source->offers
        = { { "text/uri-list", "file:///tmp/a%20b%0Ac\r\n/tmp/gr\xFC\xDF 100%\r\nfile://localhost/%25\r\n" } };
    dragAndDrop();
    EXPECT_EQ(view->dropped, (Texts { "file:///tmp/a%20b%0Ac", "file:///tmp/gr%FC%DF%20100%25", "file:///%25" }));
}

} // namespace paneweld_tests
