#include "tests/support/World.h"

using namespace paneweld;
using platform::Data;
using platform::URL;

namespace {

class OpenFile : public World {
protected:
    void SetUp() override { startWindowManager(); }

    static URL url(std::string const& text) { return *URL::fromString(text); }

    std::vector<std::string> open(std::string const& address, std::vector<OpenFileURL::BookmarkEntry> bookmarks = {})
    {
        world.ledger().clear();
        post(NotificationName::openFileURL(), OpenFileURL { url(address), std::move(bookmarks) }.userInfo());
        return ledger();
    }

    Data const granting { { 1 } };
    Data const refusing { { 2 } };
    Data const broken { { 3 } };
    URL const folder = url("file:///docs/");

    OpenFile()
    {
        world.setBookmark(granting, { url("file:///docs/"), true });
        world.setBookmark(refusing, { url("file:///closed/"), false });
    }
};

using Lines = std::vector<std::string>;

} // namespace

TEST_F(OpenFile, AFileInsideAGrantedFolderIsOpenedWithinItsScope)
{
    EXPECT_EQ(open("file:///docs/a.txt", { { folder, granting } }),
        (Lines { "resolve options=1024", "start accessing file:///docs/", "open file:///docs/a.txt",
            "stop accessing file:///docs/" }));
}

TEST_F(OpenFile, EntriesAreTriedInOrderAndAtMostOneIsUsed)
{
    EXPECT_EQ(open("file:///docs/a.txt",
                  { { url("file:///other/"), granting }, { folder, broken }, { folder, refusing }, { folder, granting },
                      { folder, granting } }),
        (Lines { "resolve options=1024", "resolve options=1024", "start accessing file:///closed/ refused",
            "resolve options=1024", "start accessing file:///docs/", "open file:///docs/a.txt",
            "stop accessing file:///docs/" }));
}

TEST_F(OpenFile, TheEntryMatchesByPlainTextAlone)
{
    // No slash at the entry's end: a neighbour of the same beginning matches too.
    EXPECT_EQ(open("file:///docs2/a.txt", { { url("file:///docs"), granting } }).size(), 4u);
    EXPECT_EQ(open("file:///docs2/a.txt", { { folder, granting } }), Lines {});
    EXPECT_EQ(open("file:///Docs/a.txt", { { folder, granting } }), Lines {});
}

TEST_F(OpenFile, AWebAddressIsOpenedWhateverTheEntriesSay)
{
    EXPECT_EQ(open("https://example.com/"), Lines { "open https://example.com/" });
    EXPECT_EQ(open("https://example.com/", { { url("https://example.com/"), broken } }),
        (Lines { "resolve options=1024", "open https://example.com/" }));
}

TEST_F(OpenFile, AFileIsOpenedWithoutAGrantOnlyWhenItCanBeReadAndNobodyRefused)
{
    EXPECT_EQ(open("file:///docs/a.txt"), Lines {});
    world.setReadable("/docs/a.txt");
    EXPECT_EQ(open("file:///docs/a.txt"), Lines { "open file:///docs/a.txt" });
    EXPECT_EQ(open("file:///docs/a.txt", { { folder, broken } }), Lines { "resolve options=1024" });
}

TEST_F(OpenFile, AnAddressGivenAsTextIsOpenedToo)
{
    post(NotificationName::openFileURL(), { { "url", "https://example.com/a b" } });
    EXPECT_EQ(ledger(), Lines { "open https://example.com/a%20b" });
}

TEST_F(OpenFile, WhatIsNoAddressIsIgnored)
{
    post(NotificationName::openFileURL(), { { "url", "" } });
    post(NotificationName::openFileURL(), { { "url", 5 } });
    post(NotificationName::openFileURL(), {});
    EXPECT_TRUE(ledger().empty());
}
