#include "backends/linux/host/KeptValues.h"
#include "backends/linux/host/FileSystem.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace paneweld_tests {

using backends::KeptValues;

namespace {

class KeptValuesTest : public testing::Test {
protected:
    platform::TemporaryFolder folder;
    std::string const path = folder.path() + "/apps/org.example.Ideas/updates.json";
};

} // namespace

TEST_F(KeptValuesTest, LastOverRestartsUntilTheyAreForgotten)
{
    KeptValues first(path);
    EXPECT_FALSE(first.text("SUSkippedVersion"));
    first.set("SUSkippedVersion", "2.0 \"beta\"");
    first.set("SUHasLaunchedBefore", "YES");
    EXPECT_EQ(KeptValues(path).text("SUSkippedVersion"), "2.0 \"beta\"");
    first.set("SUSkippedVersion", "");
    EXPECT_FALSE(KeptValues(path).text("SUSkippedVersion"));
    EXPECT_EQ(KeptValues(path).text("SUHasLaunchedBefore"), "YES");
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

TEST_F(KeptValuesTest, AFileThatCannotBeReadIsEmptyAndIsWrittenAnew)
{
    for (auto const* bytes : { "", "{", "[1]", "{\"SULastCheckTime\": 5}", "\xFF\xFE" }) {
        folder.write("apps/org.example.Ideas/updates.json", bytes);
        KeptValues values(path);
        EXPECT_FALSE(values.text("SULastCheckTime")) << bytes;
        values.set("SULastCheckTime", "7");
        EXPECT_EQ(KeptValues(path).text("SULastCheckTime"), "7") << bytes;
    }
}

// Where an app looks for updates, and whom it believes, is nothing that a file of the user's may say.
TEST_F(KeptValuesTest, OnlyWhatTheUserChoosesIsReadBack)
{
    folder.write("apps/org.example.Ideas/updates.json",
        R"({ "SUFeedURL": "https://evil.example.org/", "SUPublicEDKey": "x", "SUEnableAutomaticChecks": "YES" })");
    KeptValues const values(path);
    EXPECT_FALSE(values.text("SUFeedURL"));
    EXPECT_FALSE(values.text("SUPublicEDKey"));
    EXPECT_EQ(values.text("SUEnableAutomaticChecks"), "YES");
}

TEST_F(KeptValuesTest, WhatCannotBeWrittenIsKeptInTheProcess)
{
    // A file stands where the folder would be.
    folder.write("apps", "in the way");
    KeptValues values(path);
    values.set("SUHasLaunchedBefore", "YES");
    EXPECT_EQ(values.text("SUHasLaunchedBefore"), "YES");
    EXPECT_EQ(backends::readFile(folder.path() + "/apps").value(), "in the way");
}

TEST_F(KeptValuesTest, LieWhereTheUserKeepsSettings)
{
    setenv("XDG_CONFIG_HOME", "/some/config", 1);
    EXPECT_EQ(KeptValues::pathFor("org.example.Ideas", "updates.json"), "/some/config/org.example.Ideas/updates.json");
    setenv("HOME", "/home/ada", 1);
    // A relative one is none.
    for (auto const* config : { "", "config" }) {
        setenv("XDG_CONFIG_HOME", config, 1);
        EXPECT_EQ(KeptValues::pathFor("a", "b"), "/home/ada/.config/a/b");
    }
}

} // namespace paneweld_tests
