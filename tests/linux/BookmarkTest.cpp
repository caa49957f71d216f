#include "backends/linux/host/BookmarkData.h"
#include "backends/linux/host/FileFacts.h"
#include "backends/linux/host/FolderBookmarks.h"
#include "tests/linux/BookmarkFixture.h"
#include "tests/support/RunOptions.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

namespace paneweld_tests {

namespace fs = std::filesystem;

using backends::BookmarkData;
using backends::FolderBookmarks;
using platform::Data;
using platform::URL;

TEST_F(Bookmark, LeadsBackToItsFolderInAnotherProcess)
{
    auto const docs = makeFolder("my docs");
    auto const data = keep(docs);
    auto const child = fork();
    if (child == 0)
        _exit(found(data) == docs.absoluteString() ? 0 : 1);
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(Bookmark, OfAFileLeadsBackToIt)
{
    auto const file = URL::fileURL(home.write("a.txt", "text"), URL::IsDirectory::No);
    EXPECT_EQ(found(keep(file)), file.absoluteString());
    EXPECT_EQ(found(keep(*URL::fromString("file:///"))), "file:///");
}

TEST_F(Bookmark, FollowsARenameOfTheFolderAndOfThoseAboveIt)
{
    auto const data = keep(makeFolder("a/b/c"));
    rename("a/b/c", "a/b/new c");
    EXPECT_EQ(found(data), url("a/b/new c").absoluteString());
    rename("a", "new a");
    EXPECT_EQ(found(data), url("new a/b/new c").absoluteString());
    rename("new a/b", "new a/new b");
    EXPECT_EQ(found(data), url("new a/new b/new c").absoluteString());
}

TEST_F(Bookmark, IsRefusedWhenAnotherFolderTookThePlace)
{
    auto const data = keep(makeFolder("docs"));
    fs::remove_all(home.path() + "/docs");
    // File systems like to give the same number again.
    for (int i = 0; i < 20; ++i) {
        makeFolder("docs");
        EXPECT_EQ(found(data), "");
        fs::remove_all(home.path() + "/docs");
    }
    EXPECT_EQ(found(data), "");
}

TEST_F(Bookmark, PrefersTheFolderOverAnotherOneWithItsName)
{
    auto const data = keep(makeFolder("docs"));
    rename("docs", "old docs");
    makeFolder("docs");
    EXPECT_EQ(found(data), url("old docs").absoluteString());
    // A link to it under its name is as good as itself.
    fs::remove_all(home.path() + "/docs");
    fs::create_directory_symlink(home.path() + "/old docs", home.path() + "/docs");
    EXPECT_EQ(found(data), url("docs").absoluteString());
}

TEST_F(Bookmark, MadeThroughALinkStaysWithTheFolderAndNotWithTheLink)
{
    makeFolder("real"), makeFolder("other");
    fs::create_directory_symlink(home.path() + "/real", home.path() + "/link");
    auto const data = keep(url("link"));
    EXPECT_EQ(found(data), url("link").absoluteString()) << "the name that the user knows";
    fs::remove(home.path() + "/link");
    fs::create_directory_symlink(home.path() + "/other", home.path() + "/link");
    EXPECT_EQ(found(data), url("real").absoluteString());
}

TEST_F(Bookmark, IsRefusedWhenTheFolderWasMovedElsewhere)
{
    auto const data = keep(makeFolder("a/docs"));
    makeFolder("b");
    rename("a/docs", "b/docs");
    EXPECT_EQ(found(data), "");
}

TEST_F(Bookmark, CannotBeMadeOfWhatIsNotThere)
{
    FolderBookmarks bookmarks;
    constexpr auto options = platform::BookmarkCreationOptions::WithSecurityScope;
    EXPECT_FALSE(bookmarks.bookmarkData(url("nothing"), options));
    EXPECT_FALSE(bookmarks.bookmarkData(*URL::fromString("https://example.org/"), options));
    // Nothing tells files of this one apart, once they have gone.
    EXPECT_FALSE(bookmarks.bookmarkData(*URL::fromString("file:///proc/self/fd/"), options));
}

TEST_F(Bookmark, AScopeIsOpenedForWhatCanBeRead)
{
    FolderBookmarks bookmarks;
    EXPECT_TRUE(bookmarks.startAccessingSecurityScopedResource(makeFolder("docs")));
    bookmarks.stopAccessingSecurityScopedResource(url("docs"));
    EXPECT_FALSE(bookmarks.startAccessingSecurityScopedResource(url("nothing")));
    EXPECT_FALSE(bookmarks.startAccessingSecurityScopedResource(*URL::fromString("https://example.org/")));
}

// What people do with folders, many times over: whatever is found is the one that was kept.
TEST_F(Bookmark, NeverLeadsToAnotherFolder)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    auto const pick
        = [&](std::size_t below) { return std::uniform_int_distribution<std::size_t>(0, below - 1)(random); };
    // Few names, so that they are taken again and again. Each folder holds a file that says who it is.
    std::vector<std::string> const places { "a", "b", "c", "a/x", "a/y", "b/x", "b/y", "c/x" };
    std::vector<Data> kept;
    int made = 0;
    int refusals = 0;
    int finds = 0;
    for (int i = 0; i < 400; ++i) {
        auto const place = home.path() + "/" + places[pick(places.size())];
        std::error_code ignored;
        if (pick(3) == 0) {
            fs::remove_all(place, ignored);
        } else if (fs::exists(place)) {
            fs::rename(place, home.path() + "/" + places[pick(places.size())], ignored);
        } else if (fs::create_directories(place, ignored)) {
            std::ofstream(place + "/number") << made++;
            kept.push_back(keep(URL::fileURL(place, URL::IsDirectory::Yes)));
        }
        for (std::size_t number = kept.size() > 8 ? kept.size() - 8 : 0; number < kept.size(); ++number) {
            auto const url
                = FolderBookmarks().resolve(kept[number], platform::BookmarkResolutionOptions::WithSecurityScope);
            if (!url) {
                ++refusals;
                continue;
            }
            ++finds;
            std::size_t found = kept.size();
            std::ifstream(*url.value().filePath() + "/number") >> found;
            ASSERT_EQ(found, number) << *url.value().filePath();
        }
    }
    EXPECT_GT(finds, 100);
    EXPECT_GT(refusals, 100);
}

TEST_F(Bookmark, DataThatWasCutShortChangedOrIsOfAnotherVersionIsRefused)
{
    auto const data = keep(makeFolder("docs"));
    ASSERT_NE(found(data), "");
    for (std::size_t length = 0; length < data.bytes.size(); ++length)
        EXPECT_EQ(found({ { data.bytes.begin(), data.bytes.begin() + static_cast<std::ptrdiff_t>(length) } }), "");
    for (std::size_t i = 0; i < data.bytes.size(); ++i) {
        auto changed = data;
        changed.bytes[i] ^= 1;
        EXPECT_EQ(found(changed), "") << i;
    }
    auto longer = data;
    longer.bytes.push_back(0);
    EXPECT_EQ(found(longer), "");
    auto const text = std::string("book\0\0\0\0mark", 12);
    EXPECT_EQ(found({ { text.begin(), text.end() } }), "");
}

TEST(BookmarkBytes, ReadBackAsWhatWasWritten)
{
    auto const seed = paneweld_tests::testSeed();
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    std::mt19937 random(seed);
    auto const text = [&] {
        std::string letters(random() % 20, 'a');
        for (auto& letter : letters)
            letter = static_cast<char>('a' + random() % 26);
        return letters;
    };
    for (int i = 0; i < 500; ++i) {
        BookmarkData bookmark { "/" + text(), {}, { text(), text(), random() }, "/" + text() };
        for (auto count = random() % 8; count > 0; --count) {
            backends::FileIdentity identity { random(), static_cast<std::int64_t>(random()), 1, {} };
            identity.handle.resize(random() % 30, 7);
            bookmark.steps.push_back({ "n" + text(), identity });
        }
        auto const read = backends::decodeBookmark(backends::encodeBookmark(bookmark));
        ASSERT_TRUE(read);
        EXPECT_EQ(read.value(), bookmark);
    }
}

TEST(BookmarkBytes, WithNamesThatLeadElsewhereAreRefused)
{
    std::vector<std::string> const names { "", ".", "..", "a/b", "../..", std::string("a\0b", 3) };
    for (auto const& name : names)
        EXPECT_FALSE(backends::decodeBookmark(backends::encodeBookmark({ "/a", { { name, {} } }, {}, "/a" }))) << name;
    EXPECT_FALSE(backends::decodeBookmark(backends::encodeBookmark({ "a", {}, {}, "/a" })));
    EXPECT_FALSE(backends::decodeBookmark(backends::encodeBookmark({ "/a", {}, {}, "" })));
}

TEST(Mounts, AreReadWithTheirEscapes)
{
    auto const mounts
        = backends::mountsIn("36 35 98:0 /mnt1 /media/a\\040b rw,noatime master:1 shared:2 - ext3 /dev/root rw\n"
                             "broken line\n"
                             "37 35 0:5 / /proc rw - proc proc rw\n");
    ASSERT_EQ(mounts.size(), 2u);
    EXPECT_EQ(mounts[0].id, 36u);
    EXPECT_EQ(mounts[0].device, "98:0");
    EXPECT_EQ(mounts[0].root, "/mnt1");
    EXPECT_EQ(mounts[0].point, "/media/a b");
    EXPECT_EQ(mounts[0].type, "ext3");
    EXPECT_EQ(mounts[1].type, "proc");
    EXPECT_EQ(backends::rebased("/media/a b/c", "/media/a b", "/"), "/c");
    EXPECT_EQ(backends::rebased("/c", "/", "/media/x"), "/media/x/c");
    EXPECT_EQ(backends::rebased("/media/a", "/media/a", "/"), "/");
    EXPECT_EQ(backends::rebased("/", "/", "/media/x"), "/media/x");
    EXPECT_EQ(backends::rebased("/media/abc", "/media/a", "/"), std::nullopt);
}

} // namespace paneweld_tests
