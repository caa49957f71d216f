#include "tests/linux/SilentSocket.h"
#include "tests/linux/StatusItemFixture.h"
#include "tests/linux/Stopwatch.h"
#include "tests/support/RunOptions.h"

#include <limits>
#include <malloc.h>
#include <random>
#include <sys/resource.h>

namespace paneweld_tests {

namespace {

constexpr int titles = 10'000;
constexpr std::size_t memoryLimit = 64 * 1024;

// How often this thread has waited for something by its own wish. Whoever takes the processor away from it does not
// count, so that a busy machine says the same.
long waits()
{
    rusage usage {};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

std::size_t memoryInUse() { return mallinfo2().uordblks; }

} // namespace

// What happens to an item whose host changes a title ten thousand times, a turn of the loop after each.
class StatusItemLoadTest : public StatusItemTest {
protected:
    void SetUp() override { line = add("Open", "open"); }

    void changeTitles()
    {
        Stopwatch stopwatch("a title and a turn of the loop");
        auto const before = waits();
        for (int i = 1; i <= titles; ++i) {
            stopwatch.start();
            line->setTitle("Title " + std::to_string(i));
            loop->dispatch();
            stopwatch.stop();
        }
        EXPECT_EQ(waits(), before) << "the main thread was made to wait";
    }
    // The first time warms up.
    void expectNothingCollected()
    {
        changeTitles();
        auto const before = memoryInUse();
        changeTitles();
        EXPECT_LT(memoryInUse(), before + memoryLimit);
    }
    void showMenu() { menu->popUpMenuPositioningItem(nullptr, {}, *item->button()); }
    // From here on changes are told.
    void readMenu()
    {
        showMenu();
        answer(panel->askMenu("GetLayout", "iias", 0, -1, 0));
        settle();
    }
    void expectLastTitle()
    {
        startPanel();
        EXPECT_EQ(
            answer(panel->askMenu("GetProperty", "is", 1, "label")), "<s 'Title " + std::to_string(titles) + "'>");
        settle();
    }

    std::shared_ptr<platform::NSMenuItem> line;
};

TEST_F(StatusItemLoadTest, ASilentBusNeitherBlocksNorCollects)
{
    platform::TemporaryFolder const folder;
    SilentSocket const silent(folder.path() + "/bus");
    makeBar("unix:path=" + folder.path() + "/bus");
    item = makeItem();
    showMenu();
    expectNothingCollected();
}

TEST_F(StatusItemLoadTest, NoBusNeitherBlocksNorCollects)
{
    makeBar("unix:path=/nowhere/at/all");
    item = makeItem();
    showMenu();
    expectNothingCollected();
}

TEST_F(StatusItemLoadTest, ALivingBusIsToldAllAndNothingIsLeft)
{
    startShown();
    readMenu();
    // Its own notes would be what collects.
    panel.reset();
    changeTitles();
    expectLastTitle();
    panel.reset();
    auto const before = memoryInUse();
    changeTitles();
    expectLastTitle();
    panel.reset();
    EXPECT_LT(memoryInUse(), before + memoryLimit);
}

TEST_F(StatusItemLoadTest, ABusThatStopsReadingIsToldLater)
{
    startShown();
    readMenu();
    panel.reset();
    changeTitles();
    expectLastTitle();
    panel.reset();
    auto const before = memoryInUse();
    bus->pause();
    changeTitles();
    bus->resume();
    expectLastTitle();
    panel.reset();
    EXPECT_LT(memoryInUse(), before + memoryLimit);
}

// Calls that no panel makes: known and unknown names, numbers of no line, values of any type, some of them deep.
class StatusItemNonsenseTest : public StatusItemTest {
protected:
    template<typename T>
    T const& one(std::vector<T> const& of)
    {
        return of[std::uniform_int_distribution<std::size_t>(0, of.size() - 1)(random)];
    }
    int anyLine() { return one<int>({ 0, 1, 2, 4, 7, 8, 99, -1, std::numeric_limits<int>::max(), INT32_MIN }); }
    std::string anyEvent()
    {
        return one<std::string>({ "opened", "closed", "hovered", "", "Clicked", "clicked ", "x-", "\x01",
            std::string(5000, 'a'), "opened\ntwice", "\xF0\x9F\x92\xA3" });
    }
    // The value of an event, which no event of ours has use for.
    void appendVariant(sd_bus_message* call, int depth)
    {
        if (depth > 0) {
            sd_bus_message_open_container(call, 'v', "v");
            appendVariant(call, depth - 1);
            sd_bus_message_close_container(call);
            return;
        }
        switch (std::uniform_int_distribution(0, 4)(random)) {
        case 0:
            sd_bus_message_append(call, "v", "d", std::numeric_limits<double>::quiet_NaN());
            break;
        case 1:
            sd_bus_message_append(call, "v", "a{sv}", 1, "key", "(iay)", 7, 2, 255, 0);
            break;
        case 2:
            sd_bus_message_append(call, "v", "g", "a(iiay)");
            break;
        case 3:
            sd_bus_message_append(call, "v", "aaas", 0);
            break;
        default:
            sd_bus_message_append(call, "v", "o", "/");
            break;
        }
    }
    void appendEvent(sd_bus_message* call)
    {
        sd_bus_message_append(call, "is", anyLine(), anyEvent().c_str());
        constexpr int deepest = 20;
        appendVariant(call, std::uniform_int_distribution(0, deepest)(random));
        sd_bus_message_append(call, "u", static_cast<std::uint32_t>(random()));
    }
    std::future<std::string> askNonsense()
    {
        auto const method = one<std::string>({ "Event", "EventGroup", "GetLayout", "GetGroupProperties", "GetProperty",
            "AboutToShow", "AboutToShowGroup", "Event", "Nothing", "" });
        auto const what = std::uniform_int_distribution(0, 7)(random);
        return panel->ask("/MenuBar", "com.canonical.dbusmenu", method.empty() ? "Event" : method,
            [this, what](sd_bus_message* call) {
                if (what < 3) {
                    appendEvent(call);
                } else if (what == 3) {
                    sd_bus_message_open_container(call, 'a', "(isvu)");
                    for (int i = 0; i < 3; ++i) {
                        sd_bus_message_open_container(call, 'r', "isvu");
                        appendEvent(call);
                        sd_bus_message_close_container(call);
                    }
                    sd_bus_message_close_container(call);
                } else if (what == 4) {
                    sd_bus_message_append(call, "iias", anyLine(), anyLine(), 2, anyEvent().c_str(), "label");
                } else if (what == 5) {
                    sd_bus_message_append(call, "ai", 4, anyLine(), anyLine(), anyLine(), anyLine());
                } else if (what == 6) {
                    sd_bus_message_append(call, "is", anyLine(), anyEvent().c_str());
                } else {
                    sd_bus_message_append(call, "i", anyLine());
                }
            });
    }

    std::uint32_t seed = paneweld_tests::testSeed();
    std::mt19937 random { seed };
};

TEST_F(StatusItemNonsenseTest, IsAnsweredAndDoesNothing)
{
    SCOPED_TRACE("PANEWELD_TEST_SEED=" + std::to_string(seed));
    fillMenu();
    startShown();
    menu->popUpMenuPositioningItem(nullptr, {}, *item->button());
    auto const layout = answer(panel->askMenu("GetLayout", "iias", 0, -1, 0));
    constexpr int calls = 2000;
    for (int i = 0; i < calls; ++i)
        ASSERT_NE(answer(askNonsense()), "no answer");
    settle();
    EXPECT_EQ(actions, Texts {});
    EXPECT_EQ(answer(panel->askMenu("GetLayout", "iias", 0, -1, 0)), layout);
    answer(panel->askMenu("Event", "isvu", 1, "clicked", "s", "", 0u));
    settle();
    EXPECT_EQ(actions, Texts { "open" });
    EXPECT_EQ(place(), platform::StatusItemPlace::Panel);
}

} // namespace paneweld_tests
