#include "platform/runtime/Class.h"
#include "tests/support/World.h"

using namespace backends;
using platform::List;
using platform::NSDragOperation;
using platform::NSMenuItem;
using platform::StatusItemPlace;

namespace {

using Lines = std::vector<std::string>;

class MemoryStatusBarTest : public World {
protected:
    void SetUp() override
    {
        item = world.statusBar()->statusItemWithLength(24);
        button = world.statusBar()->button();
        world.ledger().clear();
    }

    // What the lines of a menu are sent to.
    struct Receiver : platform::NSObject {
        platform::Class const* classDescription() const override
        {
            static platform::Class const description = [] {
                platform::Class made { "Receiver" };
                made.methods = { { "act", [](platform::NSObject& object, List const&) {
                                      ++static_cast<Receiver&>(object).acts;
                                      return platform::Value();
                                  } } };
                return made;
            }();
            return &description;
        }
        int acts = 0;
    };

    std::shared_ptr<platform::NSStatusItem> item;
    std::shared_ptr<MemoryStatusBarButton> button;
    std::shared_ptr<platform::NSMenu> const menu = std::make_shared<platform::NSMenu>();
};

} // namespace

TEST_F(MemoryStatusBarTest, AnItemIsThereForAsLongAsItLives)
{
    EXPECT_EQ(world.statusBar()->item(), item);
    EXPECT_EQ(item->button(), button);
    EXPECT_EQ(button->bounds(), (platform::Rect { 0, 0, 22, 22 }));
    item = nullptr;
    EXPECT_EQ(world.statusBar()->item(), nullptr);
    EXPECT_EQ(world.statusBar()->button(), nullptr);
    EXPECT_EQ(ledger(), Lines { "statusitem remove" });
    world.statusBar()->setHasButton(false);
    EXPECT_EQ(world.statusBar()->statusItemWithLength(24)->button(), nullptr);
}

TEST_F(MemoryStatusBarTest, ItsPlaceIsToldWhenItIsAnotherOne)
{
    auto& bar = *world.statusBar();
    std::vector<StatusItemPlace> places;
    bar.setPlaceHandler([&] { places.push_back(bar.place()); });
    for (auto const place :
        { StatusItemPlace::Panel, StatusItemPlace::Nowhere, StatusItemPlace::Nowhere, StatusItemPlace::Tray })
        bar.setPlace(place);
    EXPECT_EQ(places, (std::vector { StatusItemPlace::Nowhere, StatusItemPlace::Tray }));
    bar.setPlaceHandler({});
    bar.setPlace(StatusItemPlace::Waiting);
    EXPECT_EQ(places.size(), 2u);
}

TEST_F(MemoryStatusBarTest, ADragIsShownOnlyToWhatIsRegisteredForDrags)
{
    struct Willing : platform::NSView {
        NSDragOperation draggingEntered(platform::NSDraggingInfo&) override { return NSDragOperation::Copy; }
        bool performDragOperation(platform::NSDraggingInfo&) override { return true; }
    };
    MemoryPasteboard pasteboard(List {});
    // A button takes nothing by itself, registered or not.
    button->registerForDraggedTypes({ platform::NSPasteboardTypeURL });
    EXPECT_EQ(button->drag(pasteboard), NSDragOperation::None);
    EXPECT_FALSE(button->drop(pasteboard));
    auto const willing = std::make_shared<Willing>();
    button->addSubview(willing, platform::ViewPosition::Above, nullptr);
    EXPECT_FALSE(button->drop(pasteboard));
    willing->registerForDraggedTypes({ platform::NSPasteboardTypeURL });
    EXPECT_EQ(button->drag(pasteboard), NSDragOperation::Copy);
    EXPECT_TRUE(button->drop(pasteboard));
    EXPECT_EQ(ledger(), Lines { "drop taken" });
}

TEST_F(MemoryStatusBarTest, APasteboardGivesWhatItWasGivenToWhoAsksForIt)
{
    List const contents { "text", *platform::URL::fromString("file:///a") };
    EXPECT_EQ(MemoryPasteboard(contents).readObjectsForClasses({ platform::PasteboardClass::URL }), contents);
    EXPECT_EQ(MemoryPasteboard(contents).readObjectsForClasses({}), std::nullopt);
    EXPECT_EQ(MemoryPasteboard(std::nullopt).readObjectsForClasses({ platform::PasteboardClass::URL }), std::nullopt);
}

TEST_F(MemoryStatusBarTest, OnlyWhatCanBeChosenInAnOpenMenuIsChosen)
{
    auto const receiver = std::make_shared<Receiver>();
    auto const line = [&](char const* title, char const* action) {
        auto made = NSMenuItem::create(title, action, "");
        made->setTarget(receiver);
        menu->addItem(made);
        return made;
    };
    auto const act = line("Act", "act");
    line("Other", "other");
    menu->addItem(NSMenuItem::separatorItem());
    EXPECT_FALSE(button->choose(0));
    menu->popUpMenuPositioningItem(act, { 2, 3 }, *button);
    EXPECT_EQ(ledger(), Lines { "menu shown at {2, 3} with Act" });
    EXPECT_FALSE(button->menuLines()[1].isEnabled);
    for (std::size_t const dead : { 1u, 2u, 3u })
        EXPECT_FALSE(button->choose(dead));
    EXPECT_EQ(button->menuLines().size(), 3u);
    EXPECT_TRUE(button->choose(0));
    EXPECT_EQ(receiver->acts, 1);
    EXPECT_FALSE(button->choose(0));
    // A menu that is closed tells of its titles all the same: a panel may have a copy.
    act->setTitle("Acted");
    EXPECT_EQ(ledger().back(), "menu item title: Acted");
}
