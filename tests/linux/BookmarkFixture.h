#pragma once

#include "backends/linux/host/FolderBookmarks.h"
#include "platform/foundation/URL.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace paneweld_tests {

// Bookmarks of folders in a home of the test's own.
class Bookmark : public testing::Test {
protected:
    platform::URL makeFolder(std::string const& name) const
    {
        std::filesystem::create_directories(home.path() + "/" + name);
        return url(name);
    }
    platform::URL url(std::string const& name) const
    {
        return platform::URL::fileURL(home.path() + "/" + name, platform::URL::IsDirectory::Yes);
    }
    void rename(std::string const& from, std::string const& to) const
    {
        std::filesystem::rename(home.path() + "/" + from, home.path() + "/" + to);
    }

    static platform::Data keep(platform::URL const& url)
    {
        auto const data
            = backends::FolderBookmarks().bookmarkData(url, platform::BookmarkCreationOptions::WithSecurityScope);
        EXPECT_TRUE(data) << data.error().localizedDescription;
        return data ? data.value() : platform::Data {};
    }
    // Empty when it is refused.
    static std::string found(platform::Data const& data)
    {
        auto const url
            = backends::FolderBookmarks().resolve(data, platform::BookmarkResolutionOptions::WithSecurityScope);
        return url ? url.value().absoluteString() : std::string();
    }

    platform::TemporaryFolder home;
};

} // namespace paneweld_tests
