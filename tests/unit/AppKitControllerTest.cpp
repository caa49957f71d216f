#include "iOS/AppKitController.h"
#include "tests/support/World.h"

using namespace paneweld;
using platform::ModalResponse;
using platform::URL;
using platform::Value;

namespace {

class RootController : public World {
protected:
    using Answer = std::optional<std::vector<URL>>;

    void SetUp() override
    {
        controller = AppKitController::create(world);
        madeWith = ledger();
        world.ledger().clear();
    }

    void requestAccess()
    {
        post(NotificationName::requestFileAccess(),
            RequestFileAccess { [this](auto const& urls) { answers.push_back(urls); } }.userInfo());
    }

    std::vector<URL> const chosen { *URL::fromString("file:///home/ada/Docs/") };
    std::vector<Answer> answers;
    std::vector<std::string> madeWith;
    std::shared_ptr<AppKitController> controller;
};

} // namespace

TEST_F(RootController, MakesAWindowManagerThatWatchesWindows)
{
    auto const window = world.makeWindow("w", tag("brainstorm", "b1", "Ideas"));
    window->show();
    EXPECT_EQ(window->title(), "Ideas");
}

TEST_F(RootController, MakesAStatusItemThatGoesWithIt)
{
    EXPECT_EQ(madeWith, std::vector<std::string> { "statusitem make length=-1" });
    EXPECT_EQ(log(),
        std::vector<std::string> {
            "info: status item controller init: model=Memory1,1, hostName=Memory Machine, os=Memory 1.0" });
    ASSERT_TRUE(world.statusBar()->button());
    world.statusBar()->button()->leftClick();
    EXPECT_EQ(log().back(), "debug: open brainstorm window");
    controller = nullptr;
    EXPECT_EQ(world.statusBar()->item(), nullptr);
    EXPECT_EQ(ledger(), std::vector<std::string> { "statusitem remove" });
}

TEST_F(RootController, AsksForFoldersAndHandsThemOn)
{
    world.answerNextPanel({ ModalResponse::OK, chosen });
    requestAccess();
    EXPECT_EQ(answers, std::vector<Answer> { chosen });
    // Without its bundle the texts are their keys.
    EXPECT_EQ(ledger().front(),
        "panel directories=yes files=no multiple=yes create=no directory=file:///home/ada/ "
        "message=folder_picker_message prompt=folder_picker_prompt");
}

TEST_F(RootController, OKWithNothingChosenAnswersLikeACancel)
{
    world.answerNextPanel({ ModalResponse::OK });
    world.answerNextPanel({ ModalResponse::Cancel, chosen });
    requestAccess();
    requestAccess();
    EXPECT_EQ(answers, (std::vector<Answer> { std::nullopt, std::nullopt }));
}

TEST_F(RootController, TwoRequestsOpenTwoDialogsEachAnsweredOnce)
{
    world.answerNextPanel({ ModalResponse::OK, chosen, [&] { requestAccess(); } });
    world.answerNextPanel({ ModalResponse::Cancel });
    requestAccess();
    EXPECT_EQ(answers, (std::vector<Answer> { std::nullopt, chosen }));
}

TEST_F(RootController, AMalformedRequestOpensNoDialog)
{
    post(NotificationName::requestFileAccess(), {});
    post(NotificationName::requestFileAccess(), { { "completion", "later" } });
    post(NotificationName::requestFileAccess(),
        { { "completion", platform::Callable { ExecuteMailScript::completionSignature, {} } } });
    platform::NotificationCenter::defaultCenter().post({ NotificationName::requestFileAccess(), nullptr, {} });
    EXPECT_TRUE(ledger().empty());
}

TEST_F(RootController, ARequestAfterTheControllerHasGoneIsIgnored)
{
    controller = nullptr;
    world.ledger().clear();
    requestAccess();
    EXPECT_TRUE(answers.empty());
    EXPECT_TRUE(ledger().empty());
}

TEST_F(RootController, AMailScriptIsAnsweredWithTheErrorThatThereIsNone)
{
    std::vector<platform::NSError> errors;
    auto const script = ExecuteMailScript { "composeMessage", { "a", 5 }, [&](auto const& text, auto const& error) {
                                               EXPECT_FALSE(text);
                                               ASSERT_TRUE(error);
                                               errors.push_back(*error);
                                           } };
    post(NotificationName::executeMailScript(), script.userInfo());
    EXPECT_TRUE(errors.empty()) << "the call returns at once";
    world.settle();
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0], (platform::NSError { "MailScriptRunner", -1, "MailHandlers.scpt not found in bundle" }));
    EXPECT_EQ(log("mail-script-runner"),
        std::vector<std::string> {
            "error: call handler failed: name=composeMessage error=MailHandlers.scpt not found in bundle" });
    EXPECT_EQ(world.logRecords().back().subsystem, "app.quorvel");
}

TEST_F(RootController, TheMailRoadOutlivesTheController)
{
    controller = nullptr;
    int calls = 0;
    post(NotificationName::executeMailScript(), ExecuteMailScript { "h", {}, [&](auto&&...) { ++calls; } }.userInfo());
    world.settle();
    EXPECT_EQ(calls, 1);
}

TEST_F(RootController, AMailRequestWithASingleTextAsParametersIsNeverAnswered)
{
    int calls = 0;
    auto userInfo = ExecuteMailScript { "h", {}, [&](auto&&...) { ++calls; } }.userInfo();
    userInfo["params"] = "a";
    post(NotificationName::executeMailScript(), userInfo);
    world.advance(platform::Seconds { 1 });
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(log("mail-script-runner").empty());
}
