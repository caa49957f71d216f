#include "iOS/UpdateController.h"
#include "platform/foundation/Bundles.h"
#include "platform/runtime/Class.h"
#include "tests/support/World.h"

using backends::UpdateFeed;
using backends::UpdateItem;
using Choice = backends::UpdateUserDriver::Choice;
using platform::Seconds;

namespace {

constexpr Seconds hour { 3600 };
constexpr Seconds day { 86400 };
using Lines = std::vector<std::string>;

class UpdateControllerTest : public World {
protected:
    void TearDown() override
    {
        World::TearDown();
        EXPECT_EQ(world.updates().unansweredPrompts(), expectedUnanswered);
    }

    void setApp(std::string const& more = "SUEnableAutomaticChecks = NO;")
    {
        world.files().addFile("/opt/ideas/Info.plist",
            "{ CFBundleIdentifier = \"org.example.Ideas\"; CFBundleVersion = \"1.0\"; SUPublicEDKey = good; "
            "SUFeedURL = \"https://example.org/feed\"; "
                + more + " }");
        world.bundles().setMainBundle("/opt/ideas");
        controller = paneweld::UpdateController::create(world);
    }

    void start()
    {
        controller->startUpdater();
        world.settle();
    }

    void offer(std::string const& version, std::function<void(UpdateItem&)> const& change = {})
    {
        UpdateItem item;
        item.version = item.displayVersion = version;
        item.url = "https://example.org/" + version;
        item.signature = "good";
        if (change)
            change(item);
        world.updates().setFeed(UpdateFeed { { item }, {} });
    }

    void check()
    {
        controller->checkForUpdates();
        world.settle();
    }

    void letTimePass(Seconds time)
    {
        world.updates().letTimePass(time);
        world.settle();
    }

    Lines takeLedger()
    {
        auto const lines = ledger();
        world.ledger().clear();
        return lines;
    }

    std::shared_ptr<paneweld::UpdateController> controller;
    int expectedUnanswered = 0;
};

} // namespace

TEST_F(UpdateControllerTest, StartsTheUpdaterAndSaysSo)
{
    setApp();
    EXPECT_FALSE(controller->canCheckForUpdates());
    controller->startUpdater();
    EXPECT_TRUE(controller->canCheckForUpdates());
    controller->startUpdater();
    world.settle();
    EXPECT_EQ(log(), (Lines { "info: sparkle updater started", "info: sparkle updater started" }));
    EXPECT_EQ(ledger(), Lines {});
}

TEST_F(UpdateControllerTest, LogsEachRequestAndChecksOnce)
{
    setApp();
    start();
    world.updates().holdNetwork(true);
    controller->checkForUpdates();
    EXPECT_FALSE(controller->canCheckForUpdates());
    controller->checkForUpdates();
    EXPECT_EQ(ledger(), (Lines { "update feed https://example.org/feed" }));
    EXPECT_EQ(
        log(), (Lines { "info: sparkle updater started", "debug: check for updates", "debug: check for updates" }));
    EXPECT_EQ(log("updates"), (Lines { "error: no check for updates: one is under way" }));
    world.updates().holdNetwork(false);
    world.settle();
    EXPECT_TRUE(controller->canCheckForUpdates());
    EXPECT_EQ(ledger().back(), "update shown none");
}

TEST_F(UpdateControllerTest, BeforeTheStartARequestIsOnlyLogged)
{
    setApp();
    check();
    EXPECT_EQ(ledger(), Lines {});
    EXPECT_EQ(log(), (Lines { "debug: check for updates" }));
}

TEST_F(UpdateControllerTest, AnswersByName)
{
    setApp();
    auto const& description = paneweld::UpdateController::runtimeClass();
    EXPECT_EQ(description.name, "PaneweldUpdateController");
    EXPECT_EQ(platform::perform(*controller, "canCheckForUpdates"), platform::Value(false));
    EXPECT_TRUE(platform::perform(*controller, "startUpdater").has_value());
    EXPECT_EQ(platform::perform(*controller, "canCheckForUpdates"), platform::Value(true));
    EXPECT_TRUE(platform::perform(*controller, "checkForUpdates").has_value());
    EXPECT_EQ(log().back(), "debug: check for updates");
    EXPECT_EQ(platform::perform(*controller,
                  "updater:mayPerformUpdateCheck:error:", { platform::Value(), platform::Value(0), platform::Value() }),
        platform::Value(true));
    world.settle();
}

TEST_F(UpdateControllerTest, AWorldWithoutAnUpdaterNeverFindsAnything)
{
    struct Bare : backends::MemoryPlatform {
        std::unique_ptr<platform::SPUStandardUpdaterController> makeStandardUpdaterController(
            platform::StartingUpdater, std::weak_ptr<platform::SPUUpdaterDelegate>) override
        {
            return nullptr;
        }
    } bare;
    auto const made = paneweld::UpdateController::create(bare);
    made->startUpdater();
    made->checkForUpdates();
    EXPECT_FALSE(made->canCheckForUpdates());
}

TEST_F(UpdateControllerTest, AnUpdateIsOfferedFetchedAndInstalled)
{
    setApp();
    start();
    offer("2.0");
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(ledger(),
        (Lines { "update feed https://example.org/feed", "update shown offer 2.0", "update shown progress 2.0 0",
            "update fetch https://example.org/2.0", "update shown progress 2.0 1", "update install 2.0",
            "update shown installed 2.0" }));
    EXPECT_EQ(world.updates().installedVersion(), "2.0");
    EXPECT_TRUE(controller->canCheckForUpdates());
    // What is in place already is not offered again to the old one that still runs.
    world.ledger().clear();
    check();
    EXPECT_EQ(ledger(), (Lines { "update feed https://example.org/feed", "update shown none" }));
}

TEST_F(UpdateControllerTest, AnUnsignedUpdateIsRefused)
{
    setApp();
    start();
    offer("2.0", [](UpdateItem& item) { item.signature.clear(); });
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(world.updates().installedVersion(), "");
    EXPECT_EQ(ledger().back(), "update shown error the update is not signed with a key of the app");
}

TEST_F(UpdateControllerTest, WhatCannotBeReplacedIsSaidBeforeTheDownload)
{
    setApp();
    start();
    offer("2.0");
    world.updates().setNotReplaceable("the folder is not writable");
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(ledger(),
        (Lines { "update feed https://example.org/feed", "update shown offer 2.0 but the folder is not writable" }));
}

TEST_F(UpdateControllerTest, AnOpenOfferIsBroughtToTheFront)
{
    setApp();
    start();
    offer("2.0");
    check();
    expectedUnanswered = 1;
    EXPECT_TRUE(controller->canCheckForUpdates());
    check();
    EXPECT_EQ(ledger().back(), "update to front");
}

TEST_F(UpdateControllerTest, ASkippedVersionIsNotOfferedByItselfAgain)
{
    setApp("SUEnableAutomaticChecks = YES;");
    offer("2.0");
    world.updates().answerNextUpdate(Choice::Skip);
    start();
    letTimePass(hour);
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
    letTimePass(day);
    EXPECT_EQ(ledger().back(), "update feed https://example.org/feed");
    world.updates().answerNextUpdate(Choice::Later);
    check();
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
}

TEST_F(UpdateControllerTest, ADownloadCanBeCancelled)
{
    setApp();
    start();
    offer("2.0");
    world.updates().answerNextUpdate(Choice::Install);
    // The network goes when the feed has come.
    world.ledger().setListener([this](auto const& line) {
        if (line.text == "update shown offer 2.0")
            world.updates().holdNetwork(true);
    });
    check();
    EXPECT_EQ(ledger().back(), "update fetch https://example.org/2.0");
    EXPECT_TRUE(controller->canCheckForUpdates());
    check();
    EXPECT_EQ(ledger().back(), "update to front");
    world.updates().pressCancel();
    world.settle();
    EXPECT_EQ(ledger().back(), "update dismissed");
    world.updates().holdNetwork(false);
    world.settle();
    EXPECT_EQ(ledger().back(), "update dismissed");
    EXPECT_EQ(world.updates().installedVersion(), "");
    EXPECT_TRUE(controller->canCheckForUpdates());
}

TEST_F(UpdateControllerTest, ChecksComeByTheSchedule)
{
    setApp("SUEnableAutomaticChecks = YES; SUScheduledCheckInterval = 7200;");
    start();
    // Never checked: due at once.
    letTimePass(Seconds { 0 });
    EXPECT_EQ(takeLedger(), (Lines { "update feed https://example.org/feed" }));
    letTimePass(hour * 1.9);
    EXPECT_EQ(takeLedger(), Lines {});
    letTimePass(hour * 0.2);
    EXPECT_EQ(takeLedger(), (Lines { "update feed https://example.org/feed" }));
    // Asked for in between, it begins anew.
    letTimePass(hour);
    check();
    takeLedger();
    letTimePass(hour * 1.9);
    EXPECT_EQ(takeLedger(), Lines {});
}

TEST_F(UpdateControllerTest, AFailingFeedIsSaidOnlyToWhoAsked)
{
    setApp("SUEnableAutomaticChecks = YES;");
    world.updates().setFeed(platform::NSError { "Updates", 2001, "the server answers 500" });
    start();
    letTimePass(Seconds { 0 });
    EXPECT_EQ(takeLedger(), (Lines { "update feed https://example.org/feed" }));
    EXPECT_EQ(log("updates"), (Lines { "error: no update: the server answers 500" }));
    check();
    EXPECT_EQ(ledger().back(), "update shown error the server answers 500");
}

TEST_F(UpdateControllerTest, TheUserIsAskedForPermissionAtTheSecondStart)
{
    setApp("");
    start();
    EXPECT_EQ(ledger(), Lines {});
    EXPECT_EQ(world.updates().kept("SUHasLaunchedBefore"), "YES");
    controller = paneweld::UpdateController::create(world);
    world.updates().answerNextPermission(true);
    start();
    EXPECT_EQ(takeLedger(), (Lines { "update shown permission" }));
    letTimePass(Seconds { 0 });
    EXPECT_EQ(takeLedger(), (Lines { "update feed https://example.org/feed" }));
    controller = paneweld::UpdateController::create(world);
    start();
    letTimePass(hour);
    EXPECT_EQ(takeLedger(), Lines {});
}

TEST_F(UpdateControllerTest, AutomaticUpdatesComeSilently)
{
    setApp("SUEnableAutomaticChecks = YES; SUAutomaticallyUpdate = YES;");
    offer("2.0");
    start();
    world.updates().letTimePass(Seconds { 0 });
    EXPECT_FALSE(controller->canCheckForUpdates());
    world.settle();
    EXPECT_EQ(ledger(),
        (Lines { "update feed https://example.org/feed", "update fetch https://example.org/2.0", "update install 2.0",
            "update shown installed 2.0" }));
}

TEST_F(UpdateControllerTest, AMajorUpgradeIsNotInstalledByItself)
{
    setApp("SUEnableAutomaticChecks = YES; SUAutomaticallyUpdate = YES;");
    offer("2.0", [](UpdateItem& item) { item.minimumAutomaticVersion = "1.5"; });
    start();
    letTimePass(Seconds { 0 });
    expectedUnanswered = 1;
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
}

TEST_F(UpdateControllerTest, InformationLeadsToItsPage)
{
    setApp();
    start();
    offer("2.0", [](UpdateItem& item) {
        item.isInformational = true;
        item.link = "https://example.org/news";
    });
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(ledger(),
        (Lines {
            "update feed https://example.org/feed", "update shown information 2.0", "open https://example.org/news" }));
}

TEST_F(UpdateControllerTest, AnAppWithoutAVersionIsToldSoAfterAWhile)
{
    world.files().addFile("/opt/ideas/Info.plist", "{ CFBundleIdentifier = a; }");
    world.bundles().setMainBundle("/opt/ideas");
    controller = paneweld::UpdateController::create(world);
    start();
    EXPECT_FALSE(controller->canCheckForUpdates());
    EXPECT_EQ(log("updates"), (Lines { "error: the updater does not start: the app has no version" }));
    letTimePass(Seconds { 3.9 });
    EXPECT_EQ(ledger(), Lines {});
    letTimePass(Seconds { 0.2 });
    EXPECT_EQ(ledger(), (Lines { "update shown error the app has no version" }));
}

TEST_F(UpdateControllerTest, WithoutAKeyNothingIsLookedFor)
{
    world.files().addFile("/opt/ideas/Info.plist",
        "{ CFBundleIdentifier = a; CFBundleVersion = 1; SUFeedURL = \"https://h/\"; SUEnableAutomaticChecks = NO; }");
    world.bundles().setMainBundle("/opt/ideas");
    controller = paneweld::UpdateController::create(world);
    start();
    offer("2.0");
    check();
    EXPECT_EQ(ledger().back(), "update shown error the app has no key to check updates with");
}

namespace {

struct Gatekeeper : platform::SPUUpdaterDelegate {
    std::vector<platform::SPUUpdateCheck> asked {};
    std::optional<platform::NSError> mayPerformUpdateCheck(
        platform::SPUUpdater&, platform::SPUUpdateCheck check) override
    {
        asked.push_back(check);
        return platform::NSError { "Test", 1, "not now" };
    }
};

} // namespace

TEST_F(UpdateControllerTest, ADelegateMayRefuseACheck)
{
    setApp();
    auto const gatekeeper = std::make_shared<Gatekeeper>();
    auto const updater = world.makeStandardUpdaterController(platform::StartingUpdater::Yes, gatekeeper);
    world.settle();
    updater->checkForUpdates();
    world.settle();
    EXPECT_EQ(gatekeeper->asked, (std::vector { platform::SPUUpdateCheck::Updates }));
    EXPECT_EQ(ledger(), (Lines { "update shown error not now" }));
    EXPECT_TRUE(updater->updater().canCheckForUpdates());
}

TEST_F(UpdateControllerTest, WithoutAFeedNobodyIsAskedForPermission)
{
    world.files().addFile("/opt/ideas/Info.plist", "{ CFBundleIdentifier = a; CFBundleVersion = 1; }");
    world.bundles().setMainBundle("/opt/ideas");
    for (int i = 0; i < 3; ++i) {
        controller = paneweld::UpdateController::create(world);
        start();
    }
    EXPECT_EQ(ledger(), Lines {});
    EXPECT_TRUE(controller->canCheckForUpdates());
    check();
    EXPECT_EQ(ledger().back(), "update shown error the app names no feed of updates");
}
