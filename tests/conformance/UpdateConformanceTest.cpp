#include "backends/memory/Memory.h"
#include "platform/sparkle/SPUStandardUpdaterController.h"
#include "tests/linux/UpdatesFixture.h"

#include <deque>

// What every backend owes to updates, on every backend.

namespace {

using Choice = backends::UpdateUserDriver::Choice;
using Lines = std::vector<std::string>;

// The memory world with an app of version 1.0 in it.
class MemoryUpdateStage : public testing::Test {
protected:
    void open()
    {
        m_world.files().addFile("/opt/ideas/Info.plist",
            "{ CFBundleIdentifier = \"org.example.Ideas\"; CFBundleVersion = \"1.0\"; SUPublicEDKey = good; "
            "SUFeedURL = \"https://example.org/feed\"; SUEnableAutomaticChecks = NO; }");
        m_world.bundles().setMainBundle("/opt/ideas");
        m_controller = m_world.makeStandardUpdaterController(platform::StartingUpdater::No, {});
    }
    platform::SPUStandardUpdaterController& updater() { return *m_controller; }
    void publish(std::string const& version, bool isSigned = true)
    {
        backends::UpdateItem item;
        item.version = item.displayVersion = version;
        item.url = "https://example.org/" + version;
        item.signature = isSigned ? "good" : "";
        m_world.updates().setFeed(backends::UpdateFeed { { item }, {} });
    }
    void breakFeed() { m_world.updates().setFeed(platform::NSError { "Updates", 2001, "the server answers 404" }); }
    void answerNext(Choice choice) { m_world.updates().answerNextUpdate(choice); }
    void pumpUntil(std::function<bool()> const& condition)
    {
        m_world.settle();
        EXPECT_TRUE(condition());
    }
    bool isAsked() { return m_world.updates().unansweredPrompts() > 0; }
    // What the user saw: "offer 2.0", "installed 2.0", "none", "error".
    Lines shown()
    {
        Lines lines;
        std::string const start = "update shown ";
        for (auto const& line : m_world.ledger().lines()) {
            auto const rest = line.text.starts_with(start) ? line.text.substr(start.size()) : std::string();
            if (rest.starts_with("error"))
                lines.emplace_back("error");
            else if (!rest.empty() && !rest.starts_with("progress"))
                lines.push_back(rest);
        }
        return lines;
    }
    void pressRestart() { m_world.updates().pressRestart(); }
    bool isAskedToEnd()
    {
        auto const lines = m_world.ledger().lines();
        return !lines.empty() && lines.back().text == "update restart";
    }
    std::string installed()
    {
        auto const& version = m_world.updates().installedVersion();
        return version.empty() ? "1.0" : version;
    }

private:
    backends::MemoryPlatform& m_world = backends::MemoryPlatform::install();
    std::unique_ptr<platform::SPUStandardUpdaterController> m_controller;
};

// A machine with the same app on its disk.
class LinuxUpdateStage : public paneweld_tests::UpdatesFixture {
protected:
    void open()
    {
        isOneFile = true;
        start("1.0", { m_key.publicKey() });
        platform->setTerminateHandler([this] { m_isAskedToEnd = true; });
        controller = platform->makeStandardUpdaterController(platform::StartingUpdater::No, {});
    }
    platform::SPUStandardUpdaterController& updater() { return *controller; }
    void publish(std::string const& version, bool isSigned = true)
    {
        auto item = release(version, m_key, info({ m_key.publicKey() }));
        if (!isSigned)
            item.signature.clear();
        UpdatesFixture::publish({ item }, m_key);
    }
    void breakFeed() { server.set("/feed", { .status = 404 }); }
    void answerNext(Choice choice) { m_answers.push_back(choice); }
    void pumpUntil(std::function<bool()> const& condition)
    {
        UpdatesFixture::pumpUntil([&] {
            if (!m_answers.empty() && desktop.open().find("install=") != std::string::npos) {
                desktop.press(nameOf(m_answers.front()));
                m_answers.pop_front();
            }
            return condition();
        });
    }
    Lines shown()
    {
        Lines lines;
        for (auto const& notice : desktop.shown()) {
            auto const title = notice.substr(0, notice.find('|'));
            auto const version = title.substr(title.find(' ') + 1, 3);
            if (title.ends_with("is available"))
                lines.push_back("offer " + version);
            else if (title.ends_with("is installed"))
                lines.push_back("installed " + version);
            else if (title.ends_with("could not be updated"))
                lines.emplace_back("error");
            else if (!title.starts_with("Downloading"))
                lines.emplace_back("none");
        }
        return lines;
    }
    bool isAsked() { return !m_answers.empty() || !desktop.open().empty() || !desktop.isHeard(); }
    void pressRestart() { desktop.press("restart"); }
    bool isAskedToEnd() const { return m_isAskedToEnd; }
    std::string installed() { return app->start(); }

private:
    static char const* nameOf(Choice choice)
    {
        if (choice == Choice::Install)
            return "install";
        return choice == Choice::Skip ? "skip" : "later";
    }

    paneweld_tests::SigningKey m_key { 1 };
    std::deque<Choice> m_answers;
    bool m_isAskedToEnd = false;
};

template<typename Stage>
class UpdateConformance : public Stage {
protected:
    void SetUp() override { this->open(); }

    bool canCheck() { return this->updater().updater().canCheckForUpdates(); }
    // The user asks, and waits until all is said.
    void checkUntil(Lines const& expected)
    {
        this->updater().checkForUpdates();
        this->pumpUntil([&] { return this->shown() == expected && canCheck(); });
        EXPECT_EQ(this->shown(), expected);
    }
};

using Stages = testing::Types<MemoryUpdateStage, LinuxUpdateStage>;
TYPED_TEST_SUITE(UpdateConformance, Stages);

} // namespace

TYPED_TEST(UpdateConformance, ChecksCanBeAskedForFromTheStartOn)
{
    this->publish("0.9");
    EXPECT_FALSE(this->canCheck());
    this->updater().checkForUpdates();
    EXPECT_FALSE(this->canCheck());
    this->updater().startUpdater();
    EXPECT_TRUE(this->canCheck());
    this->updater().startUpdater();
    this->updater().checkForUpdates();
    EXPECT_FALSE(this->canCheck());
    this->pumpUntil([this] { return this->canCheck(); });
    this->pumpUntil([this] { return this->shown() == Lines { "none" }; });
    EXPECT_EQ(this->installed(), "1.0");
}

TYPED_TEST(UpdateConformance, AnUpdateIsInstalledWhenTheUserSaysSo)
{
    this->publish("2.0");
    this->updater().startUpdater();
    this->answerNext(Choice::Install);
    this->checkUntil({ "offer 2.0", "installed 2.0" });
    EXPECT_EQ(this->installed(), "2.0");
    // The old one that still runs has it already.
    this->checkUntil({ "offer 2.0", "installed 2.0", "none" });
}

TYPED_TEST(UpdateConformance, TheAppIsRestartedWhenTheUserSaysSo)
{
    this->publish("2.0");
    this->updater().startUpdater();
    this->answerNext(Choice::Install);
    this->checkUntil({ "offer 2.0", "installed 2.0" });
    EXPECT_FALSE(this->isAskedToEnd());
    this->pressRestart();
    this->pumpUntil([this] { return this->isAskedToEnd(); });
}

TYPED_TEST(UpdateConformance, AnUpdateWaitsForTheUser)
{
    this->publish("2.0");
    this->updater().startUpdater();
    this->answerNext(Choice::Later);
    this->checkUntil({ "offer 2.0" });
    this->pumpUntil([this] { return !this->isAsked(); });
    EXPECT_EQ(this->installed(), "1.0");
    this->answerNext(Choice::Skip);
    this->checkUntil({ "offer 2.0", "offer 2.0" });
    this->pumpUntil([this] { return !this->isAsked(); });
    EXPECT_EQ(this->installed(), "1.0");
}

TYPED_TEST(UpdateConformance, WhatIsNotSignedIsRefused)
{
    this->publish("2.0", false);
    this->updater().startUpdater();
    this->answerNext(Choice::Install);
    this->checkUntil({ "offer 2.0", "error" });
    EXPECT_EQ(this->installed(), "1.0");
}

TYPED_TEST(UpdateConformance, AnOlderVersionIsNoUpdate)
{
    this->publish("0.9");
    this->updater().startUpdater();
    this->checkUntil({ "none" });
    EXPECT_EQ(this->installed(), "1.0");
}

TYPED_TEST(UpdateConformance, AFeedThatIsNotThereIsSaid)
{
    this->breakFeed();
    this->updater().startUpdater();
    this->checkUntil({ "error" });
    EXPECT_TRUE(this->canCheck());
}
