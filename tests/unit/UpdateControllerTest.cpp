#include "platform/runtime/Class.h"
#include "tests/unit/UpdateStage.h"

using backends::UpdateItem;
using Choice = backends::UpdateUserDriver::Choice;
using Lines = std::vector<std::string>;

namespace {

class UpdateControllerTest : public UpdateStage { };

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

TEST_F(UpdateControllerTest, EachWishReachesTheUpdaterBeforeItIsLogged)
{
    world.files().addFile("/opt/ideas/Info.plist", "{ CFBundleIdentifier = a; }");
    world.bundles().setMainBundle("/opt/ideas");
    controller = paneweld::UpdateController::create(world);
    controller->startUpdater();
    controller->checkForUpdates();
    Lines all;
    for (auto const& record : world.logRecords())
        all.push_back(record.message);
    EXPECT_EQ(all,
        (Lines { "the updater does not start: the app has no version", "sparkle updater started",
            "no check for updates: the updater is not started", "check for updates" }));
}

TEST_F(UpdateControllerTest, ItsUpdaterIsMadeUnstartedAndWithoutADelegate)
{
    struct Noted : backends::MemoryPlatform {
        std::unique_ptr<platform::SPUStandardUpdaterController> makeStandardUpdaterController(
            platform::StartingUpdater starting, std::weak_ptr<platform::SPUUpdaterDelegate> delegate) override
        {
            // Never given, which is less than gone.
            std::weak_ptr<platform::SPUUpdaterDelegate> const none;
            isBare = starting == platform::StartingUpdater::No && !delegate.owner_before(none)
                && !none.owner_before(delegate);
            ++count;
            return backends::MemoryPlatform::makeStandardUpdaterController(starting, std::move(delegate));
        }
        bool isBare = false;
        int count = 0;
    } noted;
    auto const made = paneweld::UpdateController::create(noted);
    EXPECT_EQ(noted.count, 1);
    EXPECT_TRUE(noted.isBare);
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

TEST_F(UpdateControllerTest, TheNewVersionIsStartedWhenTheUserSaysSo)
{
    setApp();
    start();
    offer("2.0");
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(ledger().back(), "update shown installed 2.0");
    world.updates().pressRestart();
    world.settle();
    EXPECT_EQ(ledger().back(), "update restart");
    world.updates().setNotStartable("the new version is no program");
    world.updates().pressRestart();
    world.settle();
    EXPECT_EQ(ledger().back(), "update shown error the new version is no program");
    EXPECT_EQ(log("updates").back(), "error: no restart: the new version is no program");
}

TEST_F(UpdateControllerTest, ARestartWaitsForNothingThatWouldBeCutOff)
{
    setApp();
    start();
    offer("2.0");
    world.updates().answerNextUpdate(Choice::Install);
    check();
    offer("3.0");
    world.updates().answerNextUpdate(Choice::Install);
    world.ledger().setListener([this](auto const& line) {
        if (line.text == "update shown offer 3.0")
            world.updates().holdNetwork(true);
    });
    check();
    // The notice of before, pressed late.
    world.updates().pressRestart();
    world.settle();
    EXPECT_EQ(ledger().back(), "update fetch https://example.org/3.0");
    world.updates().holdNetwork(false);
    world.settle();
    EXPECT_EQ(ledger().back(), "update shown installed 3.0");
}

TEST_F(UpdateControllerTest, WhetherACheckCanBeAskedForIsTrueToEveryPhase)
{
    setApp();
    start();
    offer("2.0");
    // What each line of the ledger finds, at the time when it is written.
    Lines phases;
    world.ledger().setListener([&](auto const& line) {
        auto const what = line.text.substr(0, line.text.find_last_of(" /"));
        phases.push_back(what + (controller->canCheckForUpdates() ? ": yes" : ": no"));
    });
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(phases,
        (Lines { "update feed https://example.org: no", "update shown offer: yes", "update shown progress 2.0: yes",
            "update fetch https://example.org: yes", "update shown progress 2.0: yes", "update install: yes",
            "update shown installed: yes" }));
    EXPECT_TRUE(controller->canCheckForUpdates());
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

TEST_F(UpdateControllerTest, WhoReadsWhatIsNewDecidesThen)
{
    setApp();
    start();
    offer("2.0", [](UpdateItem& item) { item.releaseNotesURL = "https://example.org/notes"; });
    world.updates().answerNextUpdate(Choice::ReadNotes);
    world.updates().answerNextUpdate(Choice::ReadNotes);
    world.updates().answerNextUpdate(Choice::Later);
    check();
    EXPECT_EQ(ledger(),
        (Lines { "update feed https://example.org/feed", "update shown offer 2.0 with notes",
            "open https://example.org/notes", "update shown offer 2.0 with notes", "open https://example.org/notes",
            "update shown offer 2.0 with notes" }));
    world.updates().answerNextUpdate(Choice::ReadNotes);
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(ledger().back(), "update shown installed 2.0");
}

TEST_F(UpdateControllerTest, AnAppMayKeepItsReleaseNotesToItself)
{
    setApp("SUEnableAutomaticChecks = NO; SUShowReleaseNotes = NO;");
    start();
    offer("2.0", [](UpdateItem& item) { item.releaseNotesURL = "https://example.org/notes"; });
    world.updates().answerNextUpdate(Choice::Later);
    check();
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
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
