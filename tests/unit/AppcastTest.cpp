#include "backends/shared/Appcast.h"
#include "backends/shared/UpdateChoice.h"
#include "tests/unit/FeedText.h"

#include <gtest/gtest.h>

using backends::UpdateItem;
using backends::XMLElement;

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
