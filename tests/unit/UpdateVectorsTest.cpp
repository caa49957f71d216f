#include "backends/shared/Appcast.h"
#include "backends/shared/FeedDate.h"
#include "backends/shared/UpdateChoice.h"
#include "backends/shared/UpdateSchedule.h"
#include "backends/shared/UpdateSettings.h"
#include "backends/shared/UpdateVersion.h"
#include "tests/support/Vectors.h"

using backends::compareVersions;
using backends::UpdateCircumstances;
using backends::UpdateFeed;
using backends::UpdateItem;
using backends::XMLElement;

namespace {

constexpr auto file = "K_updates.json";
constexpr auto sparkle = "http://www.andymatuschak.org/xml-namespaces/sparkle ";

int signOf(std::strong_ordering order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

XMLElement element(std::string name, std::string text)
{
    XMLElement made;
    made.name = std::move(name);
    made.text = std::move(text);
    return made;
}

XMLElement documentOf(std::vector<XMLElement> items)
{
    XMLElement channel { "channel", {}, {}, std::move(items) };
    return { "rss", {}, {}, { std::move(channel) } };
}

XMLElement itemOf(nlohmann::json const& facts)
{
    XMLElement item { "item", {}, {}, {} };
    if (facts.contains("version"))
        item.children.push_back(element(std::string(sparkle) + "version", facts["version"]));
    if (facts.contains("url"))
        item.children.push_back({ "enclosure", { { "url", facts["url"] } }, {}, {} });
    return item;
}

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
    EXPECT_TRUE(settings.requiresSignedFeed);
    EXPECT_EQ(settings.checksAutomatically, false);
    EXPECT_EQ(settings.checkInterval, 7200);
    EXPECT_TRUE(settings.updatesAutomatically);
    EXPECT_EQ(settings.channels, (std::set<std::string> { "beta" }));
    info["SUAllowsAutomaticUpdates"] = "NO";
    EXPECT_FALSE(read().updatesAutomatically);
    info.clear();
    EXPECT_FALSE(read().checksAutomatically);
    EXPECT_EQ(read().checkInterval, 86400);
    EXPECT_TRUE(read().publicKeys.empty());
    info["SUScheduledCheckInterval"] = "soon";
    EXPECT_EQ(read().checkInterval, 86400);
    EXPECT_TRUE(read().showsReleaseNotes);
    info["SUShowReleaseNotes"] = "NO";
    EXPECT_FALSE(read().showsReleaseNotes);
}

TEST(Appcast, ReadsAllThatAFeedMaySay)
{
    auto const name = [](std::string const& local) { return sparkle + local; };
    XMLElement enclosure { "enclosure",
        { { "url", " http://h/a.zip " }, { "length", "1234" }, { name("version"), "7" }, { name("os"), "linux" },
            { name("edSignature"), "abc" } },
        {}, {} };
    XMLElement informational { name("informationalUpdate"), {}, {},
        { element(name("version"), "3"), element(name("belowVersion"), "2") } };
    XMLElement item { "item", {}, {},
        { element("title", " Seven "), element("link", "https://h/seven"), element(name("version"), "6"),
            element(name("shortVersionString"), "Seven"), element(name("channel"), "beta"),
            element(name("minimumSystemVersion"), "5"), element(name("maximumSystemVersion"), "7"),
            element(name("minimumAutoupdateVersion"), "4"), element(name("ignoreSkippedUpgradesBelowVersion"), "6.5"),
            element(name("releaseNotesLink"), "https://h/notes"), element(name("phasedRolloutInterval"), "3600"),
            element("pubDate", "Fri, 31 Dec 1999 23:59:59 +0100"),
            { name("criticalUpdate"), { { name("version"), "1.5" } }, {}, {} }, informational, enclosure } };
    auto const feed = backends::updateFeedFrom(documentOf({ item }));
    ASSERT_TRUE(feed.hasValue());
    ASSERT_EQ(feed.value().items.size(), 1u);
    UpdateItem expected;
    // The attribute goes before the element.
    expected.version = "7";
    expected.displayVersion = "Seven";
    expected.title = "Seven";
    expected.url = "http://h/a.zip";
    expected.link = "https://h/seven";
    expected.length = 1234;
    expected.signature = "abc";
    expected.releaseNotesURL = "https://h/notes";
    expected.channel = "beta";
    expected.minimumSystemVersion = "5";
    expected.maximumSystemVersion = "7";
    expected.minimumAutomaticVersion = "4";
    expected.ignoreSkippedBelowVersion = "6.5";
    expected.system = "linux";
    expected.isCritical = true;
    expected.criticalBelowVersion = "1.5";
    expected.isInformational = true;
    expected.informationalVersions = { "3" };
    expected.informationalBelowVersion = "2";
    expected.date = 946681199;
    expected.rolloutInterval = 3600;
    EXPECT_EQ(feed.value().items[0], expected);
}

TEST(Appcast, SpeaksTheUsersLanguageWhereItCan)
{
    auto const notes = [](std::string const& language, std::string const& page) {
        auto made = element(std::string(sparkle) + "releaseNotesLink", "https://h/" + page);
        if (!language.empty())
            made.attributes["http://www.w3.org/XML/1998/namespace lang"] = language;
        return made;
    };
    auto const chosen = [](XMLElement const& item, std::vector<std::string> const& languages) {
        return backends::updateFeedFrom(documentOf({ item }), languages).value().items.at(0).releaseNotesURL;
    };
    auto item = itemOf({ { "version", "1" }, { "url", "https://h/a" } });
    EXPECT_EQ(chosen(item, { "de" }), "");
    for (auto const& [language, page] : { std::pair { "fr", "fr" }, { "", "any" }, { "de", "de" } })
        item.children.push_back(notes(language, page));
    EXPECT_EQ(chosen(item, { "de-AT", "fr" }), "https://h/de");
    EXPECT_EQ(chosen(item, { "it", "fr-BE" }), "https://h/fr");
    EXPECT_EQ(chosen(item, { "it" }), "https://h/any");
    EXPECT_EQ(chosen(item, {}), "https://h/any");
    std::erase_if(item.children, [](XMLElement const& child) { return child.text == "https://h/any"; });
    EXPECT_EQ(chosen(item, { "it" }), "https://h/fr");
}

TEST(Appcast, SendsNobodyToAPageThatIsNotOnTheWeb)
{
    auto item = itemOf({ { "version", "1" }, { "url", "https://h/a" } });
    item.children.push_back(element(std::string(sparkle) + "releaseNotesLink", "file:///etc/passwd"));
    EXPECT_EQ(backends::updateFeedFrom(documentOf({ item })).value().items.at(0).releaseNotesURL, "");
    item.children.push_back(element(std::string(sparkle) + "fullReleaseNotesLink", "https://h/all"));
    EXPECT_EQ(backends::updateFeedFrom(documentOf({ item })).value().items.at(0).releaseNotesURL, "https://h/all");
}

TEST(Appcast, KnowsUrgencyFromTagsAndLengthsThatNobodyCounted)
{
    auto item = itemOf({ { "version", "1" }, { "url", "https://h/a" } });
    item.children.back().attributes["length"] = "0";
    auto const read = [&] { return backends::updateFeedFrom(documentOf({ item })).value().items.at(0); };
    EXPECT_FALSE(read().isCritical);
    EXPECT_FALSE(read().length);
    item.children.push_back(
        { std::string(sparkle) + "tags", {}, {}, { element(std::string(sparkle) + "criticalUpdate", "") } });
    EXPECT_TRUE(read().isCritical);
    EXPECT_TRUE(isCriticalFor(read(), "0.5"));
}

TEST(Appcast, WithNothingToDownloadThereIsThePageToRead)
{
    auto item = itemOf({ { "version", "2" } });
    item.children.push_back(element("link", "https://h/news"));
    auto const read = backends::updateFeedFrom(documentOf({ item })).value().items.at(0);
    EXPECT_TRUE(isInformationalFor(read, "1"));
    EXPECT_EQ(read.link, "https://h/news");
}

TEST(Appcast, OneBadItemFailsTheFeed)
{
    auto const good = itemOf({ { "version", "1" }, { "url", "https://h/a" } });
    auto odd = good;
    auto const fails = [&](XMLElement const& bad) {
        return !backends::updateFeedFrom(documentOf({ good, bad })).hasValue();
    };
    EXPECT_FALSE(fails(good));
    for (auto const* url : { "ftp://h/a", "file:///a", "https://", "a.zip", "https://h/\na", "javascript:a" })
        EXPECT_TRUE(fails(itemOf({ { "version", "1" }, { "url", url } }))) << url;
    odd.children.back() = element("link", "mailto:a@h");
    EXPECT_TRUE(fails(odd));
    odd.children.back() = element("link", "https://h/");
    EXPECT_FALSE(fails(odd));
    odd.children.push_back(element(std::string(sparkle) + "channel", "be ta"));
    EXPECT_TRUE(fails(odd));
    odd = good;
    odd.children[1].attributes["length"] = "12 MB";
    EXPECT_TRUE(fails(odd));
    EXPECT_FALSE(backends::updateFeedFrom(element("rss", "")).hasValue());
    EXPECT_FALSE(backends::updateFeedFrom(element("feed", "")).hasValue());
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
