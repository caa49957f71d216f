#include "iOS/NotificationCenter+Paneweld.h"

#include "platform/foundation/MainThread.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>

using namespace paneweld;
using platform::Callable;
using platform::Dictionary;
using platform::List;
using platform::Notification;
using platform::URL;
using platform::Value;

namespace {

Notification with(Dictionary userInfo) { return { platform::NotificationName("any"), nullptr, std::move(userInfo) }; }

Callable callable(char const* signature)
{
    return { signature, [](List const&) { return Value(); } };
}

} // namespace

TEST(NotificationNames, AreTheirAccessorsInUpperCamelBehindThePrefix)
{
    std::map<std::string, platform::NotificationName const& (*)()> const names {
        { "Paneweld.RequestFileAccess", &NotificationName::requestFileAccess },
        { "Paneweld.ExecuteMailScript", &NotificationName::executeMailScript },
        { "Paneweld.UpdateGlobalNewBrainstormShortcut", &NotificationName::updateGlobalNewBrainstormShortcut },
        { "Paneweld.GlobalNewBrainstormShortcutTriggered", &NotificationName::globalNewBrainstormShortcutTriggered },
        { "Paneweld.OpenSettingsOrOnboarding", &NotificationName::openSettingsOrOnboarding },
        { "Paneweld.ImportDroppedURLs", &NotificationName::importDroppedURLs },
        { "Paneweld.OpenNewWindow", &NotificationName::openNewWindow },
        { "Paneweld.ForceOpenNewBrainstormWindow", &NotificationName::forceOpenNewBrainstormWindow },
        { "Paneweld.QuitApp", &NotificationName::quitApp },
        { "Paneweld.BrainstormWindowPinStateDidChange", &NotificationName::brainstormWindowPinStateDidChange },
        { "Paneweld.UpdateMenuItemTitle", &NotificationName::updateMenuItemTitle },
        { "Paneweld.WindowIdentifierDidLoad", &NotificationName::windowIdentifierDidLoad },
        { "Paneweld.BrainstormWindowPreferredHeightDidChange",
            &NotificationName::brainstormWindowPreferredHeightDidChange },
        { "Paneweld.BrainstormWindowWillResize", &NotificationName::brainstormWindowWillResize },
        { "Paneweld.BrainstormWindowDidResize", &NotificationName::brainstormWindowDidResize },
        { "Paneweld.BrainstormWindowDidEndLiveResize", &NotificationName::brainstormWindowDidEndLiveResize },
        { "Paneweld.BrainstormWindowDidReceiveDrop", &NotificationName::brainstormWindowDidReceiveDrop },
        { "Paneweld.OpenFileURL", &NotificationName::openFileURL },
        { "Paneweld.CheckForUpdates", &NotificationName::checkForUpdates },
    };
    EXPECT_EQ(names.size(), 19u);
    for (auto const& [text, accessor] : names) {
        EXPECT_EQ(accessor().rawValue(), text);
        EXPECT_EQ(&accessor(), &accessor()) << text << " is made once";
    }
}

TEST(Payloads, WhatIsWrittenIsReadBack)
{
    BrainstormWindowPreferredHeightDidChange request { "b1", false };
    request.preferredHeight = 300;
    request.maxHeight = 500;
    auto const read = BrainstormWindowPreferredHeightDidChange::from(with(request.userInfo()));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->windowID, "b1");
    EXPECT_FALSE(read->animate);
    EXPECT_EQ(read->preferredHeight, 300);
    EXPECT_EQ(read->maxHeight, 500);
    EXPECT_FALSE(read->minHeight);
    EXPECT_FALSE(read->preferredWidth);

    auto const pin
        = BrainstormWindowPinStateDidChange::from(with(BrainstormWindowPinStateDidChange { "b1", true }.userInfo()));
    ASSERT_TRUE(pin);
    EXPECT_TRUE(pin->isPinned);

    auto const shortcut = UpdateGlobalNewBrainstormShortcut::from(
        with(UpdateGlobalNewBrainstormShortcut { 45, 0x900, true }.userInfo()));
    ASSERT_TRUE(shortcut);
    EXPECT_EQ(shortcut->keyCode, 45u);
    EXPECT_EQ(shortcut->modifiers, 0x900u);

    auto const url = *URL::fromString("file:///tmp/a");
    auto const drop = ImportDroppedURLs::from(with(ImportDroppedURLs { { url } }.userInfo()));
    ASSERT_TRUE(drop);
    EXPECT_EQ(drop->urls, std::vector<URL> { url });

    auto const resize = BrainstormWindowResize::from(with(BrainstormWindowResize { 1, 2, 3, "b1" }.userInfo()));
    ASSERT_TRUE(resize);
    EXPECT_EQ(resize->maxHeight, 3);
    auto const live
        = BrainstormWindowDidEndLiveResize::from(with(BrainstormWindowDidEndLiveResize { "b1", 2, 3 }.userInfo()));
    ASSERT_TRUE(live);
    EXPECT_EQ(live->width, 2);
    auto const title = UpdateMenuItemTitle::from(with(UpdateMenuItemTitle { true }.userInfo()));
    ASSERT_TRUE(title);
    EXPECT_TRUE(title->hasUser);
    auto const loaded = WindowIdentifierDidLoad::from(with(WindowIdentifierDidLoad { "b1", "Ideas" }.userInfo()));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->localizedTitle, "Ideas");
}

TEST(Payloads, ANotificationWithoutADictionaryIsNone)
{
    Notification const bare { platform::NotificationName("any"), nullptr, {} };
    EXPECT_FALSE(RequestFileAccess::from(bare));
    EXPECT_FALSE(ExecuteMailScript::from(bare));
    EXPECT_FALSE(UpdateGlobalNewBrainstormShortcut::from(bare));
    EXPECT_FALSE(BrainstormWindowPinStateDidChange::from(bare));
    EXPECT_FALSE(BrainstormWindowPreferredHeightDidChange::from(bare));
    EXPECT_FALSE(OpenFileURL::from(bare));
    EXPECT_FALSE(UpdateMenuItemTitle::from(bare));
}

TEST(Payloads, AnimateDefaultsToTrueWhenMissingOrMistyped)
{
    EXPECT_TRUE(BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", "b1" } }))->animate);
    EXPECT_TRUE(
        BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", "b1" }, { "animate", "no" } }))->animate);
    EXPECT_FALSE(
        BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", "b1" }, { "animate", 0 } }))->animate);
}

TEST(Payloads, LengthsThatAreNotFiniteOrNotNumbersCountAsNotGiven)
{
    auto const infinity = std::numeric_limits<double>::infinity();
    auto const read = BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", "b1" }, { "minHeight", NAN },
        { "maxHeight", infinity }, { "preferredWidth", -infinity }, { "preferredHeight", "300" } }));
    ASSERT_TRUE(read);
    EXPECT_FALSE(read->minHeight);
    EXPECT_FALSE(read->maxHeight);
    EXPECT_FALSE(read->preferredWidth);
    EXPECT_FALSE(read->preferredHeight);
}

TEST(Payloads, AWindowIdMayBeAnyTextButMustBeOne)
{
    EXPECT_FALSE(BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", 1 } })));
    auto const odd = std::string("a\0b\nc", 5);
    EXPECT_EQ(BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", odd } }))->windowID, odd);
    EXPECT_EQ(BrainstormWindowPreferredHeightDidChange::from(with({ { "windowID", "" } }))->windowID, "");
}

TEST(Payloads, AMailScriptNeedsAllThreeWithTheirTypes)
{
    Value const completion = callable(ExecuteMailScript::completionSignature);
    Value const params = List { "a" };
    EXPECT_TRUE(
        ExecuteMailScript::from(with({ { "handler", "h" }, { "params", params }, { "completion", completion } })));
    EXPECT_FALSE(
        ExecuteMailScript::from(with({ { "handler", "h" }, { "params", "a" }, { "completion", completion } })));
    EXPECT_FALSE(ExecuteMailScript::from(with({ { "params", params }, { "completion", completion } })));
    EXPECT_FALSE(
        ExecuteMailScript::from(with({ { "handler", 1 }, { "params", params }, { "completion", completion } })));
    EXPECT_FALSE(ExecuteMailScript::from(with({ { "handler", "h" }, { "params", params } })));
    // A callable of another shape is another type.
    EXPECT_FALSE(ExecuteMailScript::from(with({ { "handler", "h" }, { "params", params },
        { "completion", callable(RequestFileAccess::completionSignature) } })));
}

TEST(Payloads, ACompletionCarriesItsAnswerThroughTheDictionary)
{
    std::optional<std::vector<URL>> answered;
    RequestFileAccess const request { [&](auto const& urls) { answered = urls; } };
    auto const url = *URL::fromString("file:///tmp/a/");
    RequestFileAccess::from(with(request.userInfo()))->completion(std::vector<URL> { url });
    EXPECT_EQ(answered, std::vector<URL> { url });
    RequestFileAccess::from(with(request.userInfo()))->completion(std::nullopt);
    EXPECT_FALSE(answered);

    std::optional<std::string> text;
    std::optional<platform::NSError> error;
    ExecuteMailScript const script { "h", {}, [&](auto const& t, auto const& e) {
                                        text = t;
                                        error = e;
                                    } };
    auto const read = ExecuteMailScript::from(with(script.userInfo()));
    read->completion("done", std::nullopt);
    EXPECT_EQ(text, "done");
    EXPECT_FALSE(error);
    read->completion(std::nullopt, platform::NSError { "D", -7, "why" });
    EXPECT_FALSE(text);
    EXPECT_EQ(error, (platform::NSError { "D", -7, "why" }));
}

TEST(Payloads, AnAddressMayBeAURLOrItsText)
{
    auto const url = *URL::fromString("https://example.com/a b");
    EXPECT_EQ(OpenFileURL::from(with({ { "url", url } }))->url, url);
    EXPECT_EQ(OpenFileURL::from(with({ { "url", "https://example.com/a b" } }))->url, url);
    EXPECT_FALSE(OpenFileURL::from(with({ { "url", "" } })));
    EXPECT_FALSE(OpenFileURL::from(with({ { "url", 7 } })));
}

TEST(Payloads, BookmarkEntriesOfTheWrongShapeAreSkipped)
{
    auto const url = *URL::fromString("file:///tmp/");
    platform::Data const data { { 1, 2 } };
    auto const read = OpenFileURL::from(with({ { "url", url },
        { "bookmarks",
            List { "text", Dictionary { { "url", url } }, Dictionary { { "data", data } },
                Dictionary { { "url", "file:///tmp/" }, { "data", data } },
                Dictionary { { "url", url }, { "data", "x" } }, Dictionary { { "url", url }, { "data", data } } } } }));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->bookmarks.size(), 1u);
    EXPECT_EQ(read->bookmarks[0].data, data);
    EXPECT_TRUE(OpenFileURL::from(with({ { "url", url }, { "bookmarks", "none" } }))->bookmarks.empty());
}

TEST(ClosureObserverDeathTest, ADeliveryOffTheMainThreadIsFatalAndNamesThePlace)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            platform::adoptMainThread();
            platform::NotificationCenter center;
            auto const token = addObserver(center, NotificationName::requestFileAccess(), nullptr, [](auto const&) {});
            std::thread([&] { center.post({ NotificationName::requestFileAccess(), nullptr, {} }); }).join();
        },
        "fatal error: .*iOS/NotificationCenter\\+Paneweld, line 15");
}

TEST(ClosureObserverDeathTest, APostOffTheMainThreadIsFatalEvenWhenNobodyListens)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            platform::adoptMainThread();
            platform::NotificationCenter center;
            std::thread([&] { center.post({ NotificationName::quitApp(), nullptr, {} }); }).join();
        },
        "not on the main thread: NotificationCenter.post Paneweld.QuitApp");
}
