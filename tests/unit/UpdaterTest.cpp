#include "tests/unit/UpdateStage.h"

using backends::UpdateItem;
using Choice = backends::UpdateUserDriver::Choice;
using Lines = std::vector<std::string>;

namespace {

// What becomes of an update that is looked for, and what the user has to say about it.
class UpdaterTest : public UpdateStage { };

} // namespace

TEST_F(UpdaterTest, AnUpdateIsOfferedFetchedAndInstalled)
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

TEST_F(UpdaterTest, TheNewVersionIsStartedWhenTheUserSaysSo)
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

TEST_F(UpdaterTest, ARestartWaitsForNothingThatWouldBeCutOff)
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

TEST_F(UpdaterTest, WhetherACheckCanBeAskedForIsTrueToEveryPhase)
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

TEST_F(UpdaterTest, AnUnsignedUpdateIsRefused)
{
    setApp();
    start();
    offer("2.0", [](UpdateItem& item) { item.signature.clear(); });
    world.updates().answerNextUpdate(Choice::Install);
    check();
    EXPECT_EQ(world.updates().installedVersion(), "");
    EXPECT_EQ(ledger().back(), "update shown error the update is not signed with a key of the app");
}

TEST_F(UpdaterTest, WhatCannotBeReplacedIsSaidBeforeTheDownload)
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

TEST_F(UpdaterTest, AnOpenOfferIsBroughtToTheFront)
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

TEST_F(UpdaterTest, ADownloadCanBeCancelled)
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

TEST_F(UpdaterTest, InformationLeadsToItsPage)
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

TEST_F(UpdaterTest, WhoReadsWhatIsNewDecidesThen)
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

TEST_F(UpdaterTest, AnAppMayKeepItsReleaseNotesToItself)
{
    setApp("SUEnableAutomaticChecks = NO; SUShowReleaseNotes = NO;");
    start();
    offer("2.0", [](UpdateItem& item) { item.releaseNotesURL = "https://example.org/notes"; });
    world.updates().answerNextUpdate(Choice::Later);
    check();
    EXPECT_EQ(ledger().back(), "update shown offer 2.0");
}

TEST_F(UpdaterTest, WithoutAKeyNothingIsLookedFor)
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
