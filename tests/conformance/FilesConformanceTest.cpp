#include "tests/support/MemoryStage.h"
#include "tests/support/X11Stage.h"

#include "platform/appkit/NSWorkspace.h"
#include "platform/foundation/Bookmark.h"

using platform::BookmarkCreationOptions;
using platform::BookmarkResolutionOptions;
using platform::NSError;
using platform::URL;

// What every backend owes the plug-in and its host where files are kept and opened.

namespace {

template<typename Stage>
class FilesConformance : public Stage {
protected:
    void SetUp() override
    {
        this->open();
        bookmarks = this->platform().bookmarks();
        ASSERT_TRUE(bookmarks);
    }

    platform::Data keep(URL const& url)
    {
        auto const data = bookmarks->bookmarkData(url, BookmarkCreationOptions::WithSecurityScope);
        EXPECT_TRUE(data);
        return data ? data.value() : platform::Data {};
    }
    std::optional<URL> find(platform::Data const& data)
    {
        auto const url = bookmarks->resolve(data, BookmarkResolutionOptions::WithSecurityScope);
        return url ? std::optional(url.value()) : std::nullopt;
    }

    platform::Bookmarks* bookmarks = nullptr;
};

using Stages = testing::Types<MemoryStage, X11Stage>;
TYPED_TEST_SUITE(FilesConformance, Stages);

} // namespace

TYPED_TEST(FilesConformance, ABookmarkLeadsBackToItsFolderAndOpensItsScope)
{
    auto const docs = this->makeFolder("docs");
    auto const other = this->makeFolder("other");
    auto const data = this->keep(docs);
    EXPECT_NE(data, this->keep(other));
    EXPECT_EQ(this->find(data), docs);
    EXPECT_TRUE(this->bookmarks->startAccessingSecurityScopedResource(docs));
    this->bookmarks->stopAccessingSecurityScopedResource(docs);
}

TYPED_TEST(FilesConformance, ABookmarkFollowsARenameAndIsRefusedAfterARemoval)
{
    auto const before = this->makeFolder("before");
    auto const after = URL::fileURL(*before.filePath() + " it", URL::IsDirectory::Yes);
    auto const data = this->keep(before);
    this->renameFolder(before, after);
    EXPECT_EQ(this->find(data), after);
    this->removeFolder(after);
    EXPECT_FALSE(this->find(data));
}

TYPED_TEST(FilesConformance, WhatIsNoBookmarkIsRefused)
{
    EXPECT_FALSE(this->find({}));
    EXPECT_FALSE(this->find({ { 'b', 'o', 'o', 'k' } }));
    EXPECT_FALSE(this->bookmarks->bookmarkData(
        *URL::fromString("https://example.org/"), BookmarkCreationOptions::WithSecurityScope));
}

TYPED_TEST(FilesConformance, AnOpenedAddressIsToldOnceAndLater)
{
    auto& workspace = *this->platform().workspace();
    std::vector<std::pair<std::string, bool>> told;
    workspace.setOpenHandler([&](URL const& url, std::optional<NSError> const& error) {
        told.emplace_back(url.absoluteString(), error.has_value());
    });
    this->setCanOpen(true);
    EXPECT_TRUE(workspace.openURL(*URL::fromString("https://example.org/a")));
    EXPECT_TRUE(told.empty());
    this->pumpUntil([&] { return !told.empty(); });
    this->setCanOpen(false);
    EXPECT_TRUE(workspace.openURL(*URL::fromString("https://example.org/b")));
    this->pumpUntil([&] { return told.size() == 2; });
    this->settle();
    EXPECT_EQ(told,
        (std::vector<std::pair<std::string, bool>> {
            { "https://example.org/a", false }, { "https://example.org/b", true } }));
}
