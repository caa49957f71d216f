#include "backends/shared/Appcast.h"
#include "backends/shared/FeedDate.h"
#include "backends/shared/UpdateChoice.h"
#include "backends/shared/UpdateSchedule.h"
#include "backends/shared/UpdateSettings.h"
#include "backends/shared/UpdateVersion.h"
#include "tests/support/Vectors.h"
#include "tests/unit/FeedText.h"

using backends::compareVersions;
using backends::UpdateCircumstances;
using backends::UpdateFeed;
using backends::UpdateItem;
using backends::XMLElement;

namespace {

constexpr auto file = "K_updates.json";

int signOf(std::strong_ordering order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

UpdateItem release(std::string version)
{
    UpdateItem item;
    item.version = std::move(version);
    item.url = "https://h/" + item.version;
    return item;
}

UpdateCircumstances running(std::string version)
{
    UpdateCircumstances circumstances;
    circumstances.hostVersion = std::move(version);
    circumstances.systemVersion = "6.1.0";
    return circumstances;
}

} // namespace

TEST(UpdateVectors, VersionsCompareAsTheFeedsExpect)
{
    auto const vectors = vectorsOf(file, "version");
    ASSERT_EQ(vectors.size(), 48u);
    for (auto const& vector : vectors) {
        std::string const left = vector["a"], right = vector["b"];
        int const expected = vector["expected"];
        EXPECT_EQ(signOf(compareVersions(left, right)), expected) << vector["id"];
        EXPECT_EQ(signOf(compareVersions(right, left)), -expected) << vector["id"] << " turned round";
    }
}

TEST(UpdateVectors, TheNextCheckIsWhenItsIntervalIsOver)
{
    auto const vectors = vectorsOf(file, "schedule");
    ASSERT_EQ(vectors.size(), 6u);
    for (auto const& vector : vectors) {
        auto const settings = backends::UpdateSettings::from([&](std::string const& key) {
            bool const isGiven = key == "SUScheduledCheckInterval" && !vector[key].is_null();
            return isGiven ? std::optional(platform::Value(vector[key].dump())) : std::nullopt;
        });
        auto const& since = vector["seconds_since_last_check"];
        auto const delay = backends::delayOfNextCheck(vector["automaticallyChecksForUpdates"], settings.checkInterval,
            since.is_null() ? std::nullopt : std::optional(since.get<double>()));
        auto const& expected = vector["expected"];
        if (expected.contains("none"))
            EXPECT_FALSE(delay) << vector["id"];
        else
            EXPECT_EQ(delay, expected.contains("check") ? 0.0 : expected["delay"].get<double>()) << vector["id"];
    }
}

TEST(UpdateVectors, TheBestItemOfAFeedIsChosen)
{
    auto const vectors = vectorsOf(file, "appcast");
    ASSERT_EQ(vectors.size(), 6u);
    for (auto const& vector : vectors) {
        std::vector<XMLElement> items;
        for (auto const& facts : vector["items"])
            items.push_back(itemOf(facts));
        auto const feed = backends::updateFeedFrom(documentOf(items));
        auto const& expected = vector["expected"];
        ASSERT_EQ(feed.hasValue(), !expected.contains("error")) << vector["id"];
        if (!feed)
            continue;
        auto const chosen = chooseUpdate(feed.value(), running("0.1"));
        ASSERT_TRUE(chosen) << vector["id"];
        if (expected.contains("chosen")) {
            EXPECT_EQ(chosen->version, expected["chosen"].get<std::string>());
        } else {
            EXPECT_EQ(chosen->url, expected["chosen_url"].get<std::string>());
        }
    }
}

TEST(UpdateChoice, AnOlderOrEqualVersionIsNeverOffered)
{
    UpdateFeed const feed { { release("1.0"), release("0.9") }, {} };
    EXPECT_EQ(chooseUpdate(feed, running("0.9.1"))->version, "1.0");
    EXPECT_FALSE(chooseUpdate(feed, running("1.0")));
    EXPECT_FALSE(chooseUpdate(feed, running("1.0.0")));
    EXPECT_FALSE(chooseUpdate(feed, running("2.0")));
    auto asking = running("1.0");
    asking.isUserInitiated = true;
    EXPECT_FALSE(chooseUpdate(feed, asking));
}

TEST(UpdateChoice, WhatIsForOthersIsPassedOver)
{
    auto beta = release("5"), newer = release("4"), older = release("3"), elsewhere = release("6");
    beta.channel = "beta";
    newer.minimumSystemVersion = "6.2";
    older.maximumSystemVersion = "5.10";
    elsewhere.system = "windows";
    UpdateFeed const feed { { elsewhere, beta, newer, older, release("2") }, {} };
    auto circumstances = running("1");
    EXPECT_EQ(chooseUpdate(feed, circumstances)->version, "2");
    circumstances.systemVersion = "6.2";
    EXPECT_EQ(chooseUpdate(feed, circumstances)->version, "4");
    circumstances.channels = { "beta" };
    EXPECT_EQ(chooseUpdate(feed, circumstances)->version, "5");
}

TEST(UpdateChoice, ARolloutReachesOneGroupAfterTheOther)
{
    auto item = release("2");
    item.date = 1000;
    item.rolloutInterval = 100;
    auto circumstances = running("1");
    circumstances.rolloutGroup = 3;
    circumstances.now = 1299;
    EXPECT_FALSE(chooseUpdate({ { item }, {} }, circumstances));
    circumstances.now = 1300;
    EXPECT_TRUE(chooseUpdate({ { item }, {} }, circumstances));
    circumstances.now = 1000;
    circumstances.isUserInitiated = true;
    EXPECT_TRUE(chooseUpdate({ { item }, {} }, circumstances));
    circumstances.isUserInitiated = false;
    item.isCritical = true;
    EXPECT_TRUE(chooseUpdate({ { item }, {} }, circumstances));
    item.criticalBelowVersion = "0.5";
    EXPECT_FALSE(chooseUpdate({ { item }, {} }, circumstances));
}

TEST(UpdateChoice, ASkippedVersionComesAgainWhenAskedForOrCritical)
{
    auto item = release("2");
    auto circumstances = running("1");
    circumstances.skippedVersion = "2";
    EXPECT_FALSE(chooseUpdate({ { item }, {} }, circumstances));
    EXPECT_TRUE(chooseUpdate({ { item, release("2.1") }, {} }, circumstances));
    item.isCritical = true;
    EXPECT_TRUE(chooseUpdate({ { item }, {} }, circumstances));
    item.isCritical = false;
    circumstances.isUserInitiated = true;
    EXPECT_TRUE(chooseUpdate({ { item }, {} }, circumstances));
}

TEST(UpdateChoice, ASkippedMajorUpgradeIsSkippedWithItsCorrections)
{
    auto correction = release("2.1");
    correction.minimumAutomaticVersion = "2.0";
    auto circumstances = running("1");
    circumstances.skippedVersion = "2.0";
    circumstances.skippedMajorVersion = "2.0";
    EXPECT_FALSE(chooseUpdate({ { correction }, {} }, circumstances));
    correction.ignoreSkippedBelowVersion = "2.1";
    EXPECT_TRUE(chooseUpdate({ { correction }, {} }, circumstances));
}

TEST(UpdateChoice, InformationIsForTheVersionsThatItNames)
{
    auto item = release("2");
    EXPECT_FALSE(isInformationalFor(item, "1"));
    item.isInformational = true;
    EXPECT_TRUE(isInformationalFor(item, "1"));
    item.informationalVersions = { "1.5" };
    EXPECT_FALSE(isInformationalFor(item, "1"));
    EXPECT_TRUE(isInformationalFor(item, "1.5"));
    item.informationalBelowVersion = "1.2";
    EXPECT_TRUE(isInformationalFor(item, "1"));
}

TEST(UpdateSettings, AreReadFromTheTextsOfAnInfo)
{
    std::map<std::string, platform::Value> info { { "CFBundleIdentifier", "org.example.Ideas" },
        { "CFBundleVersion", "1.2" }, { "SUFeedURL", "https://example.org/feed" }, { "SUPublicEDKey", "one" },
        { "SUPublicEDKeys", platform::List { "two", "three" } }, { "SURequireSignedFeed", "YES" },
        { "SUEnableAutomaticChecks", "NO" }, { "SUScheduledCheckInterval", "7200" }, { "SUAutomaticallyUpdate", "1" },
        { "SUAllowedChannels", platform::List { "beta" } } };
    auto const read = [&] {
        return backends::UpdateSettings::from([&](std::string const& key) {
            auto const found = info.find(key);
            return found == info.end() ? std::nullopt : std::optional(found->second);
        });
    };
    auto const settings = read();
    EXPECT_EQ(settings.bundleIdentifier, "org.example.Ideas");
    EXPECT_EQ(settings.hostVersion, "1.2");
    EXPECT_EQ(settings.feedURL, "https://example.org/feed");
    EXPECT_EQ(settings.publicKeys, (std::vector<std::string> { "one", "two", "three" }));
    EXPECT_EQ(settings.requiresSignedFeed, true);
    EXPECT_EQ(settings.checksAutomatically, false);
    EXPECT_EQ(settings.checkInterval, 7200);
    EXPECT_TRUE(settings.updatesAutomatically);
    EXPECT_EQ(settings.channels, (std::set<std::string> { "beta" }));
    info["SUAllowsAutomaticUpdates"] = "NO";
    EXPECT_FALSE(read().updatesAutomatically);
    info["SURequireSignedFeed"] = "NO";
    EXPECT_EQ(read().requiresSignedFeed, false);
    info.clear();
    EXPECT_EQ(read().requiresSignedFeed, std::nullopt);
    EXPECT_FALSE(read().checksAutomatically);
    EXPECT_EQ(read().checkInterval, 86400);
    EXPECT_TRUE(read().publicKeys.empty());
    info["SUScheduledCheckInterval"] = "soon";
    EXPECT_EQ(read().checkInterval, 86400);
    EXPECT_TRUE(read().showsReleaseNotes);
    info["SUShowReleaseNotes"] = "NO";
    EXPECT_FALSE(read().showsReleaseNotes);
}

TEST(FeedDate, IsReadInTheFormsThatFeedsHave)
{
    using backends::dateFromText;
    EXPECT_EQ(dateFromText("Thu, 01 Jan 1970 00:00:00 GMT"), 0);
    EXPECT_EQ(dateFromText("1 Jan 1970 01:00 +0100"), 0);
    EXPECT_EQ(dateFromText("Tue, 29 Feb 2028 12:30:45 -0230"), 1835449245);
    for (auto const* text :
        { "", "yesterday", "Wed, 30 Feb 2022 00:00:00 GMT", "1 Jan 1970", "1 Jan 1970 25:00 GMT",
            "1 Jan 1970 00:00:00 MEZ", "1 Jan 99999999999 00:00:00 GMT", "-1 Jan 1970 00:00:00 GMT", "1 Jan 1970 0:0" })
        EXPECT_FALSE(dateFromText(text)) << text;
}
