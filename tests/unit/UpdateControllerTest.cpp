#include "platform/runtime/Class.h"
#include "tests/unit/UpdateStage.h"

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
