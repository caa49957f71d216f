#include "tests/linux/StatusItemFixture.h"

namespace paneweld_tests {

using platform::NSMenu;
using platform::NSMenuItem;

namespace {

constexpr auto refused = "error: org.freedesktop.DBus.Error.InvalidArgs";
constexpr auto unchanged = "false";

// One line of a layout, as a panel hears it.
std::string line(int id, std::string const& properties, std::string const& children = {})
{
    return "(" + std::to_string(id) + ", {" + properties + "}, [" + children + "])";
}

std::string child(std::string const& line) { return "<(ia{sv}av) " + line + ">"; }

// What comes before the type in the order of names.
std::string standard(std::string const& label, std::string const& shortcut = {})
{
    auto const keys = shortcut.empty() ? "" : "'shortcut': <aas [[" + shortcut + "]]>, ";
    return "'enabled': <b true>, 'label': <s '" + label + "'>, " + keys + "'type': <s 'standard'>, 'visible': <b true>";
}

constexpr auto separator = "'enabled': <b true>, 'type': <s 'separator'>, 'visible': <b true>";
constexpr auto root = "'children-display': <s 'submenu'>";

std::string wholeLayout(int revision)
{
    auto const children = child(line(1, standard("Open"))) + ", " + child(line(2, standard("New"))) + ", "
        + child(line(3, standard("Settings", "'Control', ','"))) + ", " + child(line(4, separator)) + ", "
        + child(line(5, standard("Check for Updates"))) + ", " + child(line(6, separator)) + ", "
        + child(line(7, standard("Quit", "'Control', 'q'")));
    return std::to_string(revision) + " " + line(0, root, children);
}

} // namespace

class DBusMenuTest : public StatusItemTest {
protected:
    std::string layout(int parent = 0, int depth = -1)
    {
        return answer(panel->askMenu("GetLayout", "iias", parent, depth, 0));
    }
    std::string send(int id, char const* event)
    {
        return answer(panel->askMenu("Event", "isvu", id, event, "s", "", 0u));
    }
    std::string aboutToShow(int id = 0) { return answer(panel->askMenu("AboutToShow", "i", id)); }
    std::string property(int id, char const* name) { return answer(panel->askMenu("GetProperty", "is", id, name)); }
    Texts signals()
    {
        settle();
        return panel->calls();
    }
};

TEST_F(DBusMenuTest, TheFirstLayoutIsComplete)
{
    fillMenu();
    startShown();
    auto const first = layout();
    EXPECT_EQ(first, wholeLayout(2));
    // Nothing has changed, and nothing is said to have.
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(aboutToShow(), unchanged);
        EXPECT_EQ(layout(), first);
    }
    EXPECT_EQ(signals(), Texts {});
    EXPECT_EQ(actions, Texts { "right" });
}

TEST_F(DBusMenuTest, TheFirstWishToSeeItIsTheFirstRightPress)
{
    fillMenu();
    startShown();
    // Questions that are none.
    EXPECT_EQ(layout(0, 0), "1 " + line(0, root));
    EXPECT_EQ(answer(panel->askMenu("GetGroupProperties", "aias", 0, 0)), std::string("[(0, {") + root + "})]");
    EXPECT_EQ(property(1, "label"), refused);
    EXPECT_EQ(send(1, "clicked"), refused);
    EXPECT_EQ(actions, Texts {});

    EXPECT_EQ(aboutToShow(), "true");
    EXPECT_EQ(actions, Texts { "right" });
    // Who has asked already is told to ask again.
    EXPECT_EQ(signals(), Texts { "LayoutUpdated 2 0" });
    EXPECT_EQ(layout(), wholeLayout(2));
    EXPECT_EQ(aboutToShow(), unchanged);
    EXPECT_EQ(send(0, "opened"), "");
    settle();
    EXPECT_EQ(actions, Texts { "right" });
}

TEST_F(DBusMenuTest, OpeningItIsAWishToSeeIt)
{
    fillMenu();
    startShown();
    EXPECT_EQ(send(0, "opened"), "");
    settle();
    EXPECT_EQ(actions, Texts { "right" });
    EXPECT_EQ(property(7, "label"), "<s 'Quit'>");
}

TEST_F(DBusMenuTest, AMenuThatIsNotThereIsEmptyUntilItIs)
{
    startShown();
    onAction = [&](auto const&) {
        // Only at the second try.
        if (actions.size() == 2)
            fillMenu();
    };
    EXPECT_EQ(layout(), "1 " + line(0, root));
    fillMenu();
    EXPECT_EQ(aboutToShow(), "true");
    EXPECT_EQ(actions, Texts { "right" });
}

TEST_F(DBusMenuTest, AnotherTitleIsToldOnceAndIsNoOtherLayout)
{
    fillMenu();
    startShown();
    layout();
    auto const settings = menu->itemArray()[2];
    settings->setTitle("Sign In");
    EXPECT_EQ(signals(), Texts { "ItemsPropertiesUpdated [(3, {'label': <s 'Sign In'>})] []" });
    EXPECT_EQ(aboutToShow(), unchanged);
    EXPECT_EQ(property(3, "label"), "<s 'Sign In'>");
    // Of a change that is taken back at once nobody hears, of several in one go once.
    settings->setTitle("Settings");
    settings->setTitle("Sign In");
    EXPECT_EQ(signals().size(), 1u);
    settings->setTitle("Settings");
    menu->itemArray()[6]->setTitle("Quit Test");
    EXPECT_EQ(signals().back(),
        "ItemsPropertiesUpdated [(3, {'label': <s 'Settings'>}), (7, {'label': <s 'Quit Test'>})] []");
    EXPECT_EQ(signals().size(), 2u);
    EXPECT_EQ(layout().substr(0, 2), "2 ");
}

TEST_F(DBusMenuTest, TenThousandTitlesAreToldOneByOne)
{
    fillMenu();
    startShown();
    layout();
    auto const settings = menu->itemArray()[2];
    constexpr int count = 10'000;
    for (int i = 1; i <= count; ++i) {
        settings->setTitle(std::to_string(i));
        loop->dispatch();
    }
    auto const told = signals();
    ASSERT_EQ(told.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(told.back(), "ItemsPropertiesUpdated [(3, {'label': <s '10000'>})] []");
    EXPECT_EQ(layout().substr(0, 2), "2 ");
}

TEST_F(DBusMenuTest, NumbersAreForLifeAndTheRevisionFollowsTheLayout)
{
    add("First", "first");
    startShown();
    EXPECT_EQ(layout(), "2 " + line(0, root, child(line(1, standard("First")))));
    add("Second", "second");
    EXPECT_EQ(aboutToShow(), "true");
    EXPECT_EQ(signals(), Texts { "LayoutUpdated 3 0" });
    EXPECT_EQ(
        layout(), "3 " + line(0, root, child(line(1, standard("First"))) + ", " + child(line(2, standard("Second")))));
    EXPECT_EQ(aboutToShow(), unchanged);
    // Another menu with an item of the first one.
    auto const second = menu->itemArray()[1];
    menu = std::make_shared<NSMenu>();
    add("Third", "third");
    menu->addItem(second);
    menu->popUpMenuPositioningItem(nullptr, {}, *item->button());
    EXPECT_EQ(
        layout(), "4 " + line(0, root, child(line(3, standard("Third"))) + ", " + child(line(2, standard("Second")))));
    EXPECT_EQ(property(1, "label"), refused);
}

TEST_F(DBusMenuTest, SubmenusAreToldAsDeepAsIsAskedFor)
{
    auto const outer = add("Recent", "none");
    auto const inner = std::make_shared<NSMenu>();
    outer->setSubmenu(inner);
    auto const deep = NSMenuItem::create("One", "none", "");
    deep->setTarget(target);
    inner->addItem(deep);
    startShown();
    auto const submenu = "'children-display': <s 'submenu'>, " + standard("Recent");
    EXPECT_EQ(layout(), "2 " + line(0, root, child(line(1, submenu, child(line(2, standard("One")))))));
    EXPECT_EQ(layout(0, 1), "2 " + line(0, root, child(line(1, submenu))));
    EXPECT_EQ(layout(1, 1), "2 " + line(1, submenu, child(line(2, standard("One")))));
    EXPECT_EQ(layout(2), "2 " + line(2, standard("One")));
    EXPECT_EQ(layout(3), refused);
    EXPECT_EQ(aboutToShow(1), unchanged);
    deep->setTitle("Two");
    EXPECT_EQ(signals(), Texts { "ItemsPropertiesUpdated [(2, {'label': <s 'Two'>})] []" });
    EXPECT_EQ(answer(panel->askMenu("GetLayout", "iias", 0, -1, 2, "label", "absent")),
        "2 " + line(0, "", child(line(1, "'label': <s 'Recent'>", child(line(2, "'label': <s 'Two'>"))))));
}

TEST_F(DBusMenuTest, AMenuThatOpensItselfEndsSomewhere)
{
    add("Again", "none")->setSubmenu(menu);
    startShown();
    EXPECT_EQ(
        layout(), "2 " + line(0, root, child(line(1, "'children-display': <s 'submenu'>, " + standard("Again")))));
    menu->itemArray()[0]->setSubmenu(nullptr);
}

TEST_F(DBusMenuTest, PropertiesOfManyLinesAndOfOne)
{
    fillMenu();
    startShown();
    layout();
    EXPECT_EQ(answer(panel->askMenu("GetGroupProperties", "aias", 3, 1, 99, 4, 2, "label", "type")),
        "[(1, {'label': <s 'Open'>, 'type': <s 'standard'>}), (4, {'type': <s 'separator'>})]");
    EXPECT_EQ(answer(panel->askMenu("GetGroupProperties", "aias", 1, 99, 0)), refused);
    EXPECT_EQ(property(7, "shortcut"), "<aas [['Control', 'q']]>");
    EXPECT_EQ(property(1, "shortcut"), "<aas []>");
    EXPECT_EQ(property(1, "children-display"), "<s ''>");
    EXPECT_EQ(property(4, "label"), "<s ''>");
    EXPECT_EQ(property(1, "icon-of-another-protocol"), refused);
    EXPECT_EQ(answer(panel->ask("/MenuBar", "org.freedesktop.DBus.Properties", "GetAll",
                  [](auto* call) { sd_bus_message_append(call, "s", "com.canonical.dbusmenu"); })),
        "{'IconThemePath': <as []>, 'Status': <s 'normal'>, 'TextDirection': <s 'ltr'>, 'Version': <u 3>}");
}

TEST_F(DBusMenuTest, WhatCannotBeChosenIsGreyFromTheMomentOnThatItIs)
{
    auto const open = add("Open", "open");
    add("Nothing", "none")->setTarget({});
    startShown();
    layout();
    EXPECT_EQ(property(1, "enabled"), "<b true>");
    EXPECT_EQ(property(2, "enabled"), "<b false>");
    open->setTarget({});
    EXPECT_EQ(aboutToShow(), unchanged);
    EXPECT_EQ(signals(), Texts { "ItemsPropertiesUpdated [(1, {'enabled': <b false>})] []" });
    send(1, "clicked");
    send(2, "clicked");
    settle();
    EXPECT_EQ(actions, Texts { "right" });
}

TEST_F(DBusMenuTest, TitlesAndKeysAreWrittenAsTheProtocolReadsThem)
{
    add("snake_case & more", "a");
    add(std::string("bro\xFFken\0tail", 12), "b");
    add("Capital", "c", "N");
    auto const all = add("All", "d", "x");
    using Flags = platform::NSEventModifierFlags;
    all->setKeyEquivalentModifierMask(Flags::command | Flags::option | Flags::shift | Flags::control);
    add("None", "e", "y")->setKeyEquivalentModifierMask({});
    startShown();
    layout();
    EXPECT_EQ(property(1, "label"), "<s 'snake__case & more'>");
    EXPECT_EQ(property(2, "label"), "<s 'bro\xEF\xBF\xBDken'>");
    EXPECT_EQ(property(3, "shortcut"), "<aas [['Control', 'Shift', 'n']]>");
    EXPECT_EQ(property(4, "shortcut"), "<aas [['Control', 'Alt', 'Shift', 'Super', 'x']]>");
    EXPECT_EQ(property(5, "shortcut"), "<aas [['y']]>");
}

TEST_F(DBusMenuTest, ChoosingDoesItOnceAfterTheAnswer)
{
    fillMenu();
    startShown();
    layout();
    // The answer does not wait for the end of what was chosen.
    std::string duringAction;
    onAction = [&](auto const& action) {
        if (action == "open")
            duringAction = property(7, "label");
    };
    EXPECT_EQ(send(1, "clicked"), "");
    pumpUntil([&] { return !duringAction.empty(); });
    EXPECT_EQ(duringAction, "<s 'Quit'>");
    send(4, "clicked");
    send(7, "hovered");
    send(0, "closed");
    send(0, "x-vendor-event");
    EXPECT_EQ(answer(panel->askMenu("EventGroup", "a(isvu)", 3, 2, "clicked", "i", 0, 0u, 99, "clicked", "s", "", 0u, 5,
                  "clicked", "s", "", 0u)),
        "[99]");
    settle();
    EXPECT_EQ(actions, (Texts { "right", "open", "new", "update" }));
}

TEST_F(DBusMenuTest, WhatMakesNoSenseIsRefusedWithALine)
{
    fillMenu();
    startShown();
    layout();
    struct Case {
        std::string answer, line;
    };
    Case const cases[] = {
        { send(99, "clicked"), "menu: Event refused: no line 99" },
        { send(-1, "opened"), "menu: Event refused: no line -1" },
        { send(1, "exploded"), "menu: Event refused: no event exploded" },
        { send(0, "clicked"), "menu: Event refused: the menu itself cannot be chosen" },
        { answer(panel->askMenu("Event", "s", "clicked")),
            "menu: Event refused: arguments of other types than \"isvu\"" },
        { answer(panel->askMenu("Event", "isvu", 1, "", "a{sv}", 0, 0u)), "menu: Event refused: no event " },
        { answer(panel->askMenu("GetLayout", "", 0)),
            "menu: GetLayout refused: arguments of other types than \"iias\"" },
        { aboutToShow(99), "menu: AboutToShow refused: no line 99" },
        { answer(panel->askMenu("AboutToShowGroup", "ai", 2, 98, 99)), "menu: AboutToShowGroup refused: no line 98" },
        { answer(panel->askMenu("EventGroup", "a(isvu)", 1, 99, "clicked", "s", "", 0u)),
            "menu: EventGroup refused: no line 99" },
    };
    Texts expected;
    for (auto const& one : cases) {
        EXPECT_EQ(one.answer, refused) << one.line;
        expected.push_back(one.line);
    }
    EXPECT_EQ(lines.messages, expected);
    EXPECT_EQ(answer(panel->askMenu("Explode", "")), "error: org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(answer(panel->askMenu("AboutToShowGroup", "ai", 2, 1, 99)), "[] [99]");
    EXPECT_EQ(answer(panel->askMenu("AboutToShowGroup", "ai", 0)), "[] []");
    settle();
    EXPECT_EQ(actions, Texts { "right" });
    EXPECT_EQ(layout(), wholeLayout(2));
}

TEST_F(DBusMenuTest, TheItemMayGoWhileItsMenuIsWantedOrUsed)
{
    fillMenu();
    startShown();
    onAction = [&](auto const& action) {
        if (action == "right")
            item.reset();
    };
    EXPECT_EQ(layout().substr(0, 5), "error");
    item = makeItem();
    startPanel(2);
    onAction = [&](auto const& action) {
        if (action == "open")
            item.reset();
    };
    ASSERT_TRUE(pumpUntil([&] { return watcher->count("Register") == 2; }));
    layout();
    answer(panel->askMenu("EventGroup", "a(isvu)", 2, 1, "clicked", "s", "", 0u, 2, "clicked", "s", "", 0u));
    pumpUntil([&] { return item == nullptr; });
    EXPECT_EQ(actions.back(), "open");
    pumpUntil([&] { return place() == platform::StatusItemPlace::Nowhere; });
    // The menu outlives it, and can change.
    menu->itemArray()[0]->setTitle("Open Again");
    loop->dispatch();
}

} // namespace paneweld_tests
