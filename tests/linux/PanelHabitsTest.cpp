#include "tests/linux/StatusItemFixture.h"

#include <ostream>

namespace paneweld_tests {

namespace {

// One thing that a panel sends when the user does something with the item.
struct Step {
    enum What {
        Token,
        Activate,
        SecondaryActivate,
        ContextMenu,
        AboutToShow,
        Layout, // of the whole menu
        ShallowLayout, // of its first level
        Properties, // of all lines
        Opened,
        Closed,
        ChooseFirst,
        ChooseFirstInGroup,
        OpenedAndAboutToShowInGroups,
        OldActivate, // a method that others have
    };
    What what;
    int x = 0;
    int y = 0;
};

// What a user does with the item on a panel, as the panel tells it, and what the app is to do. A menu that the panel
// has fetched before the user wants it is there already, and a right press does nothing more.
struct Habit {
    char const* name;
    std::vector<Step> steps;
    std::vector<std::string> actions;
    // Before the user did anything.
    std::vector<Step> atStart = {};
    friend void PrintTo(Habit const& habit, std::ostream* stream) { *stream << habit.name; }
};

using enum Step::What;

std::vector<Habit> habits()
{
    std::vector<Step> const fetched { { Layout }, { Properties } };
    return {
        { "PlasmaLeft", { { Token }, { Activate, 640, 1060 } }, { "left" } },
        { "PlasmaMiddle", { { Token }, { SecondaryActivate, 640, 1060 } }, {} },
        { "PlasmaRight", { { AboutToShow }, { ShallowLayout }, { Opened }, { Closed } }, { "right" } },
        { "PlasmaChoice", { { AboutToShow }, { Layout }, { Opened }, { ChooseFirst }, { Closed } },
            { "right", "open" } },
        { "XfceLeft", { { Activate, 12, 14 } }, { "left" }, fetched },
        { "XfceRight", { { AboutToShow } }, {}, fetched },
        { "XfceChoice", { { AboutToShow }, { ChooseFirst } }, { "open" }, fetched },
        { "MateLeft", { { Activate, 0, 25 } }, { "left" } },
        { "MateRight", { { Opened }, { AboutToShow }, { Layout }, { Closed } }, { "right" } },
        { "MateWithoutMenus", { { ContextMenu, 0, 25 } }, { "right" } },
        { "LxqtLeft", { { Activate, 700, 780 } }, { "left" }, { { Layout } } },
        { "LxqtMiddle", { { SecondaryActivate, 700, 780 } }, {}, { { Layout } } },
        { "LxqtRight", { { AboutToShow }, { Opened }, { Closed } }, {}, { { Layout } } },
        { "GnomeSingleClick", { { AboutToShow }, { Opened }, { Closed } }, {}, fetched },
        { "GnomeDoubleClick", { { Activate, 900, 10 } }, { "left" }, fetched },
        { "GnomeMiddle", { { OldActivate }, { SecondaryActivate, 900, 10 } }, {}, fetched },
        { "GnomeChoice", { { OpenedAndAboutToShowInGroups }, { ChooseFirstInGroup } }, { "right", "open" } },
        { "WaybarLeft", { { Activate, 1800, 5 } }, { "left" }, fetched },
        { "WaybarMiddle", { { SecondaryActivate, 1800, 5 } }, {}, fetched },
        { "WaybarRight", { { AboutToShow }, { Opened } }, {}, fetched },
        { "NoMenusAtAll", { { ContextMenu, 3, 4 }, { Activate, 3, 4 } }, { "right", "left" } },
    };
}

} // namespace

class PanelHabits : public StatusItemTest, public ::testing::WithParamInterface<Habit> {
protected:
    std::string doStep(Step const& step)
    {
        switch (step.what) {
        case Token:
            return answer(panel->askItem("ProvideXdgActivationToken", "s", "token"));
        case Activate:
            return answer(panel->askItem("Activate", "ii", step.x, step.y));
        case SecondaryActivate:
            return answer(panel->askItem("SecondaryActivate", "ii", step.x, step.y));
        case ContextMenu:
            return answer(panel->askItem("ContextMenu", "ii", step.x, step.y));
        case AboutToShow:
            return answer(panel->askMenu("AboutToShow", "i", 0));
        case Layout:
            return answer(panel->askMenu("GetLayout", "iias", 0, -1, 0));
        case ShallowLayout:
            return answer(panel->askMenu("GetLayout", "iias", 0, 1, 4, "type", "label", "enabled", "visible"));
        case Properties:
            return answer(panel->askMenu("GetGroupProperties", "aias", 3, 1, 2, 3, 0));
        case Opened:
            return event(0, "opened");
        case Closed:
            return event(0, "closed");
        case ChooseFirst:
            return event(1, "clicked");
        case ChooseFirstInGroup:
            return answer(panel->askMenu("EventGroup", "a(isvu)", 1, 1, "clicked", "s", "", 77u));
        case OpenedAndAboutToShowInGroups:
            return answer(panel->askMenu("EventGroup", "a(isvu)", 1, 0, "opened", "s", "", 77u))
                + answer(panel->askMenu("AboutToShowGroup", "ai", 1, 0));
        case OldActivate:
            // Refused, whereupon they go on to the next.
            EXPECT_TRUE(answer(panel->askItem("XAyatanaSecondaryActivate", "u", 77u)).starts_with("error"));
            return {};
        }
        return "error: no such step";
    }

    std::string event(int id, char const* name)
    {
        return answer(panel->askMenu("Event", "isvu", id, name, "s", "", 77u));
    }
};

TEST_P(PanelHabits, DoOneThingEach)
{
    fillMenu();
    startShown();
    for (auto const& step : GetParam().atStart)
        EXPECT_FALSE(doStep(step).starts_with("error")) << step.what;
    settle();
    EXPECT_EQ(actions, GetParam().atStart.empty() ? Texts {} : Texts { "right" });
    actions.clear();
    for (auto const& step : GetParam().steps)
        EXPECT_FALSE(doStep(step).starts_with("error")) << step.what;
    settle();
    EXPECT_EQ(actions, GetParam().actions);
    EXPECT_EQ(lines.messages, Texts {});
}

INSTANTIATE_TEST_SUITE_P(
    All, PanelHabits, ::testing::ValuesIn(habits()), [](auto const& habit) { return std::string(habit.param.name); });

} // namespace paneweld_tests
