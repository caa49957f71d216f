#include "tests/unit/UpdateStage.h"

using backends::UpdateItem;
using platform::Seconds;
using Choice = backends::UpdateUserDriver::Choice;
using Lines = std::vector<std::string>;

namespace {

constexpr Seconds hour { 3600 };
constexpr Seconds day { 86400 };

// What happens by itself, and when.
class UpdateScheduleTest : public UpdateStage { };

} // namespace

TEST_F(UpdateScheduleTest, ASkippedVersionIsNotOfferedByItselfAgain)
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

TEST_F(UpdateScheduleTest, ChecksComeByTheSchedule)
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

TEST_F(UpdateScheduleTest, AFailingFeedIsSaidOnlyToWhoAsked)
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

TEST_F(UpdateScheduleTest, TheUserIsAskedForPermissionAtTheSecondStart)
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

TEST_F(UpdateScheduleTest, AutomaticUpdatesComeSilently)
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

TEST_F(UpdateScheduleTest, AMajorUpgradeIsNotInstalledByItself)
{
    setApp("SUEnableAutomaticChecks = YES; SUAutomaticallyUpdate = YES;");
    offer("2.0", [](UpdateItem& item) { item.minimumAutomaticVersion = "1.5"; });
    start();
    letTimePass(Seconds { 0 });
    expectedUnanswered = 1;
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
}

TEST_F(UpdateScheduleTest, AnAppWithoutAVersionIsToldSoAfterAWhile)
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

TEST_F(UpdateScheduleTest, WithoutAFeedNobodyIsAskedForPermission)
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

TEST_F(UpdateScheduleTest, AQuestionThatWasClosedIsAskedAtTheNextStart)
{
    setApp("");
    start();
    controller = paneweld::UpdateController::create(world);
    world.updates().answerNextPermission(std::nullopt);
    start();
    EXPECT_EQ(takeLedger(), (Lines { "update shown permission" }));
    // In between the user may check as ever, and is not asked about other things.
    check();
    EXPECT_EQ(takeLedger(), (Lines { "update feed https://example.org/feed", "update shown none" }));
    letTimePass(day);
    EXPECT_EQ(takeLedger(), Lines {});
    controller = paneweld::UpdateController::create(world);
    world.updates().answerNextPermission(false);
    start();
    EXPECT_EQ(takeLedger(), (Lines { "update shown permission" }));
    controller = paneweld::UpdateController::create(world);
    start();
    letTimePass(day);
    EXPECT_EQ(takeLedger(), Lines {});
}

TEST_F(UpdateScheduleTest, ACheckInTheFutureCountsAsOneOfNow)
{
    setApp("SUEnableAutomaticChecks = YES;");
    // Made when the clock was wrong.
    auto const far = static_cast<std::int64_t>(world.updates().now()) + 1'000'000'000;
    world.updates().keep("SULastCheckTime", std::to_string(far));
    start();
    letTimePass(hour * 23);
    EXPECT_EQ(takeLedger(), Lines {});
    letTimePass(hour * 2);
    EXPECT_EQ(takeLedger(), (Lines { "update feed https://example.org/feed" }));
}

TEST_F(UpdateScheduleTest, AGroupOfARolloutIsChosenOnceAndKept)
{
    setApp("SUEnableAutomaticChecks = YES;");
    auto const now = world.updates().now();
    world.updates().keep("SUUpdateGroupIdentifier", "6");
    offer("2.0", [now](UpdateItem& item) {
        item.date = now;
        item.rolloutInterval = 86400;
    });
    expectedUnanswered = 1;
    start();
    letTimePass(Seconds { 0 });
    for (int i = 1; i <= 5; ++i)
        letTimePass(day);
    EXPECT_EQ(takeLedger(), Lines(6, "update feed https://example.org/feed"));
    letTimePass(day);
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
    EXPECT_EQ(world.updates().kept("SUUpdateGroupIdentifier"), "6");
}
