#include "iOS/NSWindow+Paneweld.h"
#include "tests/support/World.h"

#include "platform/runtime/AssociatedObjects.h"

using namespace paneweld;

namespace {

class WindowKinds : public World { };

constexpr char const* brainstormTitle = R"({"id":"b1","localized_title":"Ideas","type":"brainstorm"})";

} // namespace

TEST_F(WindowKinds, SizeRulesAreTheKindsOwnAndMayBeChanged)
{
    using platform::Size;
    EXPECT_EQ(Brainstorm::minimumSize, (Size { 640, 91 }));
    EXPECT_EQ(Brainstorm::maximumSize, (Size { 1280, 1440 }));
    EXPECT_EQ(Brainstorm::expandedMinimumHeight, 360);
    EXPECT_EQ(iOSApp::minimumSize, (Size { 400, 700 }));
    EXPECT_EQ(Onboarding::minimumSize, (Size { 320, 700 }));
    EXPECT_EQ(Onboarding::maximumSize, (Size { 430, 960 }));
    EXPECT_EQ(Settings::minimumSize, (Size { 320, 640 }));
    EXPECT_EQ(Settings::maximumSize, (Size { 430, 960 }));
    Settings::minimumSize = { 1, 2 };
    EXPECT_EQ(Settings::minimumSize, (Size { 1, 2 }));
}

TEST_F(WindowKinds, AHumanTitleIsLeftAloneAndNothingIsPosted)
{
    Hearer const loaded(NotificationName::windowIdentifierDidLoad());
    auto const window = world.makeWindow("w", "Settings");
    loadWindowIdentifierFromTitle(*window);
    EXPECT_EQ(window->title(), "Settings");
    EXPECT_FALSE(uniqueIdentifier(*window));
    EXPECT_FALSE(windowType(*window));
    EXPECT_FALSE(isBrainstorm(*window) || isIOSApp(*window) || isOnboarding(*window) || isSettings(*window));
    EXPECT_TRUE(loaded.heard.empty());
    EXPECT_TRUE(ledger().empty());
}

TEST_F(WindowKinds, ATaggedTitleIsReadOnceAndTheHumanTitlePutBack)
{
    Hearer const loaded(NotificationName::windowIdentifierDidLoad());
    auto const window = world.makeWindow("w", brainstormTitle);
    loadWindowIdentifierFromTitle(*window);
    EXPECT_EQ(window->title(), "Ideas");
    EXPECT_TRUE(isBrainstorm(*window));
    EXPECT_EQ(uniqueIdentifier(*window), "b1");
    ASSERT_EQ(loaded.heard.size(), 1u);
    EXPECT_EQ(loaded.heard[0].object, window);
    EXPECT_EQ(loaded.heard[0].userInfo, (platform::Dictionary { { "windowID", "b1" }, { "localizedTitle", "Ideas" } }));

    window->hostSetTitle(tag("settings", "s1"));
    loadWindowIdentifierFromTitle(*window);
    EXPECT_EQ(window->title(), tag("settings", "s1"));
    EXPECT_EQ(uniqueIdentifier(*window), "b1");
    EXPECT_EQ(loaded.heard.size(), 1u);
}

TEST_F(WindowKinds, TheTagAndTheTitleStandWhenTheHostHearsOfThem)
{
    auto const window = world.makeWindow("w", brainstormTitle);
    std::string titleSeen;
    std::optional<std::string> idSeen;
    platform::Observation const observation(platform::NotificationCenter::defaultCenter(),
        { NotificationName::windowIdentifierDidLoad(), nullptr, {} }, [&](auto const&) {
            titleSeen = window->title();
            idSeen = uniqueIdentifier(*window);
        });
    loadWindowIdentifierFromTitle(*window);
    EXPECT_EQ(titleSeen, "Ideas");
    EXPECT_EQ(idSeen, "b1");
}

TEST_F(WindowKinds, AnUnknownTypeIsCarriedButIsNoKind)
{
    auto const window = world.makeWindow("w", tag("inspector", "i1"));
    loadWindowIdentifierFromTitle(*window);
    EXPECT_EQ(windowType(*window), "inspector");
    EXPECT_FALSE(isBrainstorm(*window) || isIOSApp(*window) || isOnboarding(*window) || isSettings(*window));
}

TEST_F(WindowKinds, TitlesThatAreAlmostIdentifiersAreTitles)
{
    std::string const deep = R"({"id":"b1","localized_title":"x","type":"brainstorm","deep":)" + std::string(600, '[')
        + std::string(600, ']') + "}";
    for (auto const& title : std::vector<std::string> { "", "{", "{}", R"({"id":"b1","type":"brainstorm"})",
             R"({"id":"b1","localized_title":"x","type":"brainstorm"} x)", R"({'id':'b1'})",
             R"({"id":1,"localized_title":"x","type":"brainstorm"})", std::string(1 << 20, '{'), deep,
             "\xff\xfe{\xff" }) {
        auto const window = world.makeWindow("w", title);
        loadWindowIdentifierFromTitle(*window);
        EXPECT_EQ(window->title(), title);
        EXPECT_FALSE(uniqueIdentifier(*window));
    }
}

TEST_F(WindowKinds, AnIdOfOneMebibyteIsAnId)
{
    std::string const id(1 << 20, 'x');
    auto const window = world.makeWindow("w", tag("brainstorm", id));
    loadWindowIdentifierFromTitle(*window);
    EXPECT_EQ(uniqueIdentifier(*window), id);
}

TEST_F(WindowKinds, PinningAloneChangesNothingElse)
{
    auto const window = world.makeWindow("w", brainstormTitle);
    EXPECT_FALSE(isBrainstormPinned(*window));
    setBrainstormPinned(*window, true);
    EXPECT_TRUE(isBrainstormPinned(*window));
    setBrainstormPinned(*window, false);
    EXPECT_FALSE(isBrainstormPinned(*window));
    EXPECT_TRUE(ledger().empty());
}

TEST_F(WindowKinds, APinnedWindowFloatsInFrontAndASecondCallTakesItBack)
{
    auto const window = world.makeWindow("w", brainstormTitle);
    setBrainstormPinned(*window, true);
    updateWindowLevel(*window);
    EXPECT_EQ(ledger(), (std::vector<std::string> { "w setLevel: 3", "w orderFrontRegardless" }));
    updateWindowLevel(*window);
    EXPECT_EQ(window->level(), platform::windowLevelNormal);
    updateWindowLevel(*window);
    EXPECT_EQ(window->level(), platform::windowLevelFloating);
}

TEST_F(WindowKinds, AWindowThatIsNotPinnedSinksOnlyWhenItIsNotNormalAlready)
{
    auto const window = world.makeWindow("w", brainstormTitle);
    updateWindowLevel(*window);
    setBrainstormPinned(*window, false);
    updateWindowLevel(*window);
    EXPECT_TRUE(ledger().empty());
    auto const floating = world.makeWindow("f", brainstormTitle);
    floating->setLevel(platform::windowLevelFloating);
    world.ledger().clear();
    updateWindowLevel(*floating);
    EXPECT_EQ(ledger(), std::vector<std::string> { "f setLevel: 0" });
    EXPECT_EQ(floating->level(), platform::windowLevelNormal);
}
