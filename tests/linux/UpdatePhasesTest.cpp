#include "backends/linux/host/FileSystem.h"
#include "backends/linux/host/UserEnvironment.h"
#include "tests/linux/UpdatesFixture.h"

#include <filesystem>
#include <fstream>
#include <sys/stat.h>
#include <unistd.h>

extern char** environ;

namespace paneweld_tests {

namespace {

// What the user and the host see while an update is under way.
class UpdatePhases : public UpdatesFixture {
protected:
    // A release whose server falls silent when so much of it has come.
    void releaseStalling(std::string const& version, double part)
    {
        auto const item = release(version, key, {});
        auto const archive = backends::readFile(app->scratch() + "/releases/" + version + ".tar.gz").take();
        server.set("/" + version + ".tar.gz",
            { .body = archive, .stallsAfter = static_cast<std::size_t>(static_cast<double>(*item.length) * part) });
    }
    void acceptOffer(std::string const& version)
    {
        controller->checkForUpdates();
        ASSERT_TRUE(waitFor(offerOf(version)));
        press("install");
    }

    SigningKey key { 1 };
};

} // namespace

TEST_F(UpdatePhases, TheNoticeShowsHowFarADownloadIs)
{
    start("1.0", { key.publicKey() });
    releaseStalling("2.0", 0.615);
    acceptOffer("2.0");
    waitFor("Downloading Ideas 2.0|61 %|cancel=Cancel");
    // Asked for once more, it is shown once more.
    auto const before = desktop.shown().size();
    EXPECT_TRUE(canCheck());
    controller->checkForUpdates();
    pumpUntil([&] { return desktop.shown().size() > before; });
    EXPECT_EQ(desktop.open(), "Downloading Ideas 2.0|61 %|cancel=Cancel");
    press("cancel");
    pumpUntil([&] { return desktop.open().empty() && app->leftovers().empty(); });
    EXPECT_EQ(app->start(), "1.0");
}

TEST_F(UpdatePhases, NothingCanBeCheckedWhileAnUpdateComesByItself)
{
    start("1.0", { key.publicKey() }, "SUEnableAutomaticChecks = NO;");
    releaseStalling("2.0", 0.5);
    app->rewrite("1.0", info({ key.publicKey() }) + "SUEnableAutomaticChecks = YES; SUAutomaticallyUpdate = YES;");
    startInstalled();
    EXPECT_TRUE(canCheck());
    pumpUntil([&] { return server.requests().size() == 2; });
    EXPECT_FALSE(canCheck());
    controller->checkForUpdates();
    EXPECT_TRUE(desktop.shown().empty());
    // An app that ends does not wait for the rest of it.
    controller.reset();
    platform.reset();
    EXPECT_EQ(app->start(), "1.0");
    EXPECT_TRUE(app->leftovers().empty());
}

TEST_F(UpdatePhases, AFileIsReplacedBehindItsLinkAndRestartedWhenTheUserSaysSo)
{
    isOneFile = true;
    start("1.0", { key.publicKey() });
    std::filesystem::create_symlink(app->path(), app->scratch() + "/link");
    release("2.0", key, {});
    int ended = 0;
    platform->setTerminateHandler([&] { ++ended; });
    setenv("APPIMAGE", (app->scratch() + "/link").c_str(), 1);
    updateTo("2.0");
    EXPECT_EQ(app->start(), "2.0");
    EXPECT_EQ(std::filesystem::read_symlink(app->scratch() + "/link"), app->path());
    EXPECT_TRUE(app->leftovers().empty());
    // Nobody is thrown out of the app.
    EXPECT_EQ(ended, 0);
    press("restart");
    pumpUntil([&] { return ended == 1; });
    EXPECT_TRUE(canCheck());
}

TEST_F(UpdatePhases, ARestartThatCannotBeIsSaidAndEndsNothing)
{
    isOneFile = true;
    start("1.0", { key.publicKey() });
    release("2.0", key, {});
    bool isEnded = false;
    platform->setTerminateHandler([&] { isEnded = true; });
    updateTo("2.0");
    chmod(app->path().c_str(), 0644);
    press("restart");
    waitFor("Ideas could not be updated|" + app->path() + ": Permission denied|");
    EXPECT_FALSE(isEnded);
}

TEST_F(UpdatePhases, WithNobodyToShowItAnOfferIsOverAndTheNextCheckRuns)
{
    start("1.0", { key.publicKey() });
    release("2.0", key, {});
    desktop.leave();
    controller->checkForUpdates();
    pumpUntil([&] { return server.requests().size() == 1; });
    // An offer that was open would only be shown again, and the feed not be asked.
    pumpUntil([&] {
        if (canCheck())
            controller->checkForUpdates();
        return server.requests().size() == 2;
    });
    EXPECT_EQ(app->start(), "1.0");
}

TEST_F(UpdatePhases, AnOldImageCannotComeUnderANewNumber)
{
    isOneFile = true;
    start("1.0", { key.publicKey() });
    auto item = release("0.9", key, {});
    // Rightly signed once. The number is that of whoever is in the middle.
    item.version = "2.0";
    server.set("/feed", { .body = feed({ item }, builtAgo(0)) });
    controller->checkForUpdates();
    EXPECT_TRUE(waitFor("Ideas could not be updated|the feed is refused: it is not signed|"));
    EXPECT_EQ(server.requests(), (std::vector<std::string> { "/feed" }));
    EXPECT_EQ(app->start(), "1.0");
}

TEST_F(UpdatePhases, AnAppInOneFileMayDoWithoutASignedFeedWhenItSaysSo)
{
    isOneFile = true;
    start("1.0", { key.publicKey() }, "SUEnableAutomaticChecks = NO; SURequireSignedFeed = NO;");
    server.set("/feed", { .body = feed({ release("2.0", key, {}) }) });
    updateTo("2.0");
    EXPECT_EQ(app->start(), "2.0");
}

TEST_F(UpdatePhases, AnOfferOutlivesTheDesktopThatShowsIt)
{
    start("1.0", { key.publicKey() });
    release("2.0", key, {});
    controller->checkForUpdates();
    ASSERT_TRUE(waitFor(offerOf("2.0")));
    desktop.leave();
    desktop.comeBack();
    ASSERT_TRUE(waitFor(offerOf("2.0")));
    press("install");
    ASSERT_TRUE(waitFor(installedNotice("2.0")));
    EXPECT_EQ(app->start(), "2.0");
}

TEST_F(UpdatePhases, NobodyIsAskedForAPassword)
{
    start("1.0", { key.publicKey() });
    release("2.0", key, info({ key.publicKey() }));
    // The only programs there are: those that unpack, and those that would ask.
    auto const programs = app->scratch() + "/programs";
    std::filesystem::create_directories(programs);
    auto const variables = backends::environmentOfUser(environ);
    for (auto const* name : { "tar", "gzip" })
        std::filesystem::create_symlink(backends::pathOfProgram(name, variables), programs + "/" + name);
    for (auto const* name : { "sudo", "su", "pkexec", "doas", "gksu", "kdesu", "ssh-askpass", "zenity", "kdialog" }) {
        std::ofstream(programs + "/" + name) << "#!/bin/sh\n: >\"" + app->scratch() + "/asked\"\n";
        chmod((programs + "/" + name).c_str(), 0755);
    }
    auto const path = std::string(std::getenv("PATH"));
    setenv("PATH", programs.c_str(), 1);
    chmod(app->path().c_str(), 0555);
    if (geteuid() == 0) {
        // Root may write everywhere, but does not take an app from its owner.
        ASSERT_EQ(chown(app->path().c_str(), 65534, 65534), 0);
    }
    controller->checkForUpdates();
    pumpUntil([&] { return desktop.open().find("|It cannot be installed: ") != std::string::npos; });
    press("later");
    ASSERT_EQ(chown(app->path().c_str(), geteuid(), getegid()), 0);
    chmod(app->path().c_str(), 0755);
    updateTo("2.0");
    EXPECT_FALSE(std::filesystem::exists(app->scratch() + "/asked"));
    setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(app->start(), "2.0");
}

} // namespace paneweld_tests
