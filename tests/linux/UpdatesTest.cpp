#include "tests/linux/UpdatesFixture.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace paneweld_tests {

using backends::UpdateItem;

namespace {

class UpdatesTest : public UpdatesFixture {
protected:
    SigningKey key { 1 };

    // What is shown, and that nothing has changed.
    void expectError(std::string const& words)
    {
        waitFor("Ideas could not be updated|" + words + "|");
        pumpUntil([&] { return canCheck(); });
        EXPECT_EQ(app->start(), "1.0");
        EXPECT_TRUE(app->leftovers().empty());
    }
    void acceptOffer(std::string const& version)
    {
        controller->checkForUpdates();
        ASSERT_TRUE(waitFor(offerOf(version)));
        press("install");
    }
};

} // namespace

TEST_F(UpdatesTest, ANewVersionTakesThePlaceOfTheOldOne)
{
    start("1.0", { key.publicKey() });
    release("2.0", key, info({ key.publicKey() }));
    EXPECT_EQ(app->start(), "1.0");
    EXPECT_TRUE(canCheck());
    controller->checkForUpdates();
    EXPECT_FALSE(canCheck());
    ASSERT_TRUE(waitFor(offerOf("2.0")));
    EXPECT_TRUE(canCheck());
    // Nothing is fetched that nobody has agreed to.
    EXPECT_EQ(server.requests(), (std::vector<std::string> { "/feed" }));
    press("install");
    ASSERT_TRUE(waitFor(installedNotice("2.0")));
    EXPECT_EQ(app->start(), "2.0");
    EXPECT_TRUE(app->leftovers().empty());
    EXPECT_EQ(desktop.shown().at(1), "Downloading Ideas 2.0|0 %|cancel=Cancel");
    startInstalled();
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor("You’re up to date|There is no newer version of Ideas.|"));
}

TEST_F(UpdatesTest, ThreeReleasesChangeTheKey)
{
    SigningKey const after(2);
    start("1.0", { key.publicKey() });
    // The second release is signed with the old key and brings the new one along.
    release("2.0", key, info({ key.publicKey(), after.publicKey() }) + "SUEnableAutomaticChecks = NO;");
    updateTo("2.0");
    startInstalled();
    // The third knows the new one alone, and is signed with it.
    release("3.0", after, info({ after.publicKey() }) + "SUEnableAutomaticChecks = NO;");
    updateTo("3.0");
    EXPECT_EQ(app->start(), "3.0");
    startInstalled();
    // Whoever stole the old key is too late.
    release("4.0", key, info({ key.publicKey() }));
    acceptOffer("4.0");
    pumpUntil([&] { return desktop.open().starts_with("Ideas could not be updated|"); });
    EXPECT_EQ(app->start(), "3.0");
    release("5.0", after, info({ after.publicKey() }));
    updateTo("5.0");
    EXPECT_EQ(app->start(), "5.0");
}

TEST_F(UpdatesTest, SkippingAReleaseStrandsNobodyWhoHasBothKeys)
{
    SigningKey const after(2);
    start("1.0", { key.publicKey(), after.publicKey() });
    release("3.0", after, info({ after.publicKey() }));
    updateTo("3.0");
    EXPECT_EQ(app->start(), "3.0");
}

TEST_F(UpdatesTest, WhatIsNotSignedRightlyIsRefused)
{
    start("1.0", { key.publicKey() });
    auto item = release("2.0", SigningKey(9), {});
    acceptOffer("2.0");
    expectError("the update is refused: its signature is not by a key of the app");
    item.signature.clear();
    server.set("/feed", { .body = feed({ item }) });
    acceptOffer("2.0");
    expectError("the update is refused: it is not signed");
    // The address leads to other bytes than those that were signed, of the same length.
    item = release("2.0", key, {});
    server.set("/other", { .body = std::string(*item.length, 'x') });
    server.set("/2.0.tar.gz", { .status = 302, .headers = { "Location: /other" } });
    acceptOffer("2.0");
    expectError("the update is refused: its signature is not by a key of the app");
    server.set("/other", { .body = std::string(*item.length - 1, 'x') });
    acceptOffer("2.0");
    expectError("the download is shorter than the feed says");
}

TEST_F(UpdatesTest, WithoutAKeyNothingIsFetched)
{
    start("1.0", {});
    release("2.0", key, {});
    controller->checkForUpdates();
    expectError("the app has no key to check updates with");
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(UpdatesTest, AnOlderVersionIsNeverOffered)
{
    start("2.0", { key.publicKey() });
    release("1.9", key, {});
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor("You’re up to date|There is no newer version of Ideas.|"));
    EXPECT_EQ(server.requests(), (std::vector<std::string> { "/feed" }));
}

TEST_F(UpdatesTest, ADownloadIsCancelledFromItsNotice)
{
    start("1.0", { key.publicKey() });
    auto const item = release("2.0", key, {});
    // Less than a hundredth of it: nothing but the first notice is shown.
    server.set("/2.0.tar.gz", { .body = app->archive("2.0"), .stallsAfter = 1 });
    acceptOffer("2.0");
    ASSERT_TRUE(waitFor("Downloading Ideas 2.0|0 %|cancel=Cancel"));
    EXPECT_TRUE(canCheck());
    pumpUntil([&] { return server.requests().size() == 2; });
    press("cancel");
    pumpUntil([&] { return desktop.open().empty() && app->leftovers().empty(); });
    EXPECT_EQ(app->start(), "1.0");
    startInstalled();
    release("2.0", key, {});
    updateTo("2.0");
}

TEST_F(UpdatesTest, WhereNothingCanBeWrittenThatIsSaidBeforeTheDownload)
{
    if (geteuid() == 0) {
        // Root may write everywhere, but does not take an app from its owner.
        start("1.0", { key.publicKey() });
        ASSERT_EQ(chown(app->path().c_str(), 65534, 65534), 0);
    } else {
        start("1.0", { key.publicKey() });
        chmod(app->parent().c_str(), 0555);
    }
    release("2.0", key, {});
    controller->checkForUpdates();
    pumpUntil([&] { return desktop.open().starts_with("Ideas 2.0 is available|It cannot be installed: "); });
    EXPECT_TRUE(desktop.open().ends_with("|later=Later,skip=Skip This Version")) << desktop.open();
    EXPECT_EQ(server.requests(), (std::vector<std::string> { "/feed" }));
    chmod(app->parent().c_str(), 0755);
}

TEST_F(UpdatesTest, ASignedFeedIsDemandedAndNeverOlderThanTheLast)
{
    start("1.0", { key.publicKey() }, "SUEnableAutomaticChecks = NO; SURequireSignedFeed = YES;");
    auto const item = release("2.0", key, {});
    auto const dated = [&](std::vector<UpdateItem> const& items, std::int64_t secondsAgo) {
        return key.signedFeed(feed(items, builtAgo(secondsAgo)));
    };
    controller->checkForUpdates();
    expectError("the feed is refused: it is not signed");
    server.set("/feed", { .body = key.signedFeed(feed({ item })) });
    controller->checkForUpdates();
    expectError("the feed is refused: it does not say when it was built");
    constexpr std::int64_t day = 86400;
    server.set("/feed", { .body = dated({}, 31 * day) });
    controller->checkForUpdates();
    expectError("the feed is refused: it is too old");
    server.set("/feed", { .body = dated({ item }, day) });
    controller->checkForUpdates();
    ASSERT_TRUE(waitFor(offerOf("2.0")));
    press("later");
    // An old one, replayed to hide the update.
    server.set("/feed", { .body = dated({}, 2 * day) });
    startInstalled();
    controller->checkForUpdates();
    expectError("the feed is refused: a newer one was here before");
}

TEST_F(UpdatesTest, ChecksAndUpdatesComeByThemselvesWhenTheyMay)
{
    start("1.0", { key.publicKey() }, "SUEnableAutomaticChecks = YES; SUAutomaticallyUpdate = YES;");
    release("2.0", key, info({ key.publicKey() }) + "SUEnableAutomaticChecks = YES;");
    ASSERT_TRUE(waitFor(installedNotice("2.0")));
    EXPECT_EQ(app->start(), "2.0");
    EXPECT_EQ(desktop.shown().size(), 1u);
    // The next one waits for its day.
    startInstalled();
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor("You’re up to date|There is no newer version of Ideas.|"));
    EXPECT_EQ(server.requests(), (std::vector<std::string> { "/feed", "/2.0.tar.gz", "/feed" }));
}

TEST_F(UpdatesTest, TheUserDecidesAboutChecksAtTheSecondStart)
{
    start("1.0", { key.publicKey() }, "");
    server.set("/feed", { .body = feed({}) });
    pumpUntil([&] { return std::filesystem::exists(app->scratch() + "/config/org.example.Ideas/updates.json"); });
    startInstalled();
    ASSERT_TRUE(waitFor("Check for updates automatically?|Should Ideas look for new versions from time to time?|"
                        "allow=Check Automatically,refuse=Don’t Check"));
    EXPECT_TRUE(server.requests().empty());
    press("allow");
    pumpUntil([&] { return server.requests().size() == 1; });
    startInstalled();
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor("You’re up to date|There is no newer version of Ideas.|"));
}

TEST_F(UpdatesTest, AnOfferThatWasSkippedOrClosedIsOverUntilItIsAskedFor)
{
    start("1.0", { key.publicKey() });
    release("2.0", key, {});
    controller->checkForUpdates();
    ASSERT_TRUE(waitFor(offerOf("2.0")));
    // Asked again, it is shown again.
    controller->checkForUpdates();
    pumpUntil([&] { return desktop.shown().size() == 2; });
    dismiss();
    controller->checkForUpdates();
    pumpUntil([&] { return desktop.shown().size() >= 3; });
    ASSERT_TRUE(waitFor(offerOf("2.0")));
    press("skip");
    EXPECT_EQ(app->start(), "1.0");
}

} // namespace paneweld_tests
