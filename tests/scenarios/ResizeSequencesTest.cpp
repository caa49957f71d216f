#include "tests/support/PlainResizePipelines.h"
#include "tests/support/Vectors.h"
#include "tests/support/World.h"

#include <cmath>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

using nlohmann::json;
using namespace paneweld;
using backends::MemoryPlatform;
using backends::MemoryWindow;
using platform::Rect;
using platform::Seconds;

namespace {

bool sameJSON(json const& a, json const& b)
{
    if (a.is_number() && b.is_number())
        return std::abs(a.get<double>() - b.get<double>()) < 1e-6;
    if (a.type() != b.type() || a.size() != b.size())
        return false;
    if (a.is_array()) {
        for (std::size_t i = 0; i < a.size(); ++i) {
            if (!sameJSON(a.at(i), b.at(i)))
                return false;
        }
        return true;
    }
    if (a.is_object()) {
        for (auto const& [key, value] : a.items()) {
            if (!b.contains(key) || !sameJSON(value, b.at(key)))
                return false;
        }
        return true;
    }
    return a == b;
}

json asJSON(platform::Value const& value)
{
    if (auto const* const text = value.asText())
        return *text;
    return value.asDouble().value_or(NAN);
}

json asJSON(std::string const& rectText)
{
    json numbers = json::array();
    for (std::size_t at = 1; at < rectText.size(); at = rectText.find_first_of(",}", at) + 2)
        numbers.push_back(std::stod(rectText.substr(at)));
    return numbers;
}

// How the manager runs its pipelines: as it does, or with every one torn down and built again at each change.
enum class Way { Fast, Plain };

void PrintTo(Way way, std::ostream* stream) { *stream << (way == Way::Fast ? "fast" : "plain"); }

// Tells when the pipelines are rebuilt.
class ObservedWindowManager : public WindowManager {
public:
    using Listener = std::function<void(std::set<std::string> const&)>;

    static std::shared_ptr<ObservedWindowManager> create(platform::Platform& platform, Way way, Listener listener)
    {
        std::shared_ptr<ObservedWindowManager> manager(new ObservedWindowManager(platform, std::move(listener)));
        manager->observeWindowActions();
        if (way == Way::Plain) {
            manager->m_plain.emplace(manager->m_resizeBrainstormSubject.publisher(),
                manager->m_isWindowAnimatingSubject.publisher(),
                [self = manager.get()](auto const& latest) { self->receive(latest); });
        }
        return manager;
    }

protected:
    void rebuildResizePipelines(WindowAction const& change) override
    {
        if (change.action == WindowAction::Case::WillShow)
            m_shown.insert(change.windowIdentifier);
        else
            m_shown.erase(change.windowIdentifier);
        m_listener(m_shown);
        if (m_plain)
            m_plain->rebuild(change);
        else
            WindowManager::rebuildResizePipelines(change);
    }

private:
    ObservedWindowManager(platform::Platform& platform, Listener listener)
        : WindowManager(platform)
        , m_listener(std::move(listener))
    {
    }

    Listener m_listener;
    std::set<std::string> m_shown;
    std::optional<PlainResizePipelines> m_plain;
};

// Plays one example in a world of its own, and writes down what a host would notice.
class SequencePlayer {
public:
    SequencePlayer(json const& vector, Way way)
        : m_world(MemoryPlatform::install())
        , m_vector(vector)
    {
        // The styling's first frame is then {100, 84, 640, 91}, as the examples have it.
        m_world.setMainScreen(platform::NSScreen { { 0, 0, 840, 1600 }, { 0, 0, 840, 1600 } });
        m_world.ledger().setListener([this](auto const& line) { hear(line.text); });
        platform::NotificationCenter::defaultCenter().setTap([this](auto const& notification) { hear(notification); });
        m_manager = ObservedWindowManager::create(m_world, way, [this](auto const& ids) { note({ "rebuild", ids }); });
        m_manager->observeNotifications();
        for (auto const& observer : vector.value("observers", json::array()))
            m_reactions["Paneweld.BrainstormWindow" + observer.at("on").template get<std::string>()]
                = observer.at("do");
    }

    json play()
    {
        for (auto const& window : m_vector.at("windows")) {
            if (window.value("shown", true))
                show(window.at("id"));
        }
        m_world.advance(Seconds { 1 });
        m_start = m_world.clock().now();
        m_events = json::array();
        for (auto const& step : m_vector.at("steps"))
            run(step);
        return m_events;
    }

private:
    void note(json event)
    {
        event.insert(event.begin(), (m_world.clock().now() - m_start).count());
        m_events.push_back(std::move(event));
    }

    void hear(std::string const& line)
    {
        auto const space = line.find(' ');
        auto const window = line.substr(0, space);
        auto const what = line.substr(space + 1);
        auto const rect = [&](std::size_t after) { return asJSON(what.substr(after, what.find('}') + 1 - after)); };
        // The first frame of the styling is set without display and belongs to no request.
        if (what.starts_with("setFrame: ") && what.ends_with("display: yes"))
            note({ "frame", window, rect(10) });
        if (what.starts_with("frame {"))
            note({ "frame", window, rect(6) });
        if (what.starts_with("animate {"))
            note({ "animate", window, rect(8) });
    }

    void hear(platform::Notification const& notification)
    {
        auto const& name = notification.name;
        if (name != NotificationName::brainstormWindowWillResize()
            && name != NotificationName::brainstormWindowDidResize()
            && name != NotificationName::brainstormWindowDidEndLiveResize())
            return;
        json userInfo = json::object();
        for (auto const& [key, value] : *notification.userInfo)
            userInfo[std::string(key)] = asJSON(value);
        note({ name.rawValue(), userInfo });
        auto const reaction = m_reactions.extract(name.rawValue());
        if (reaction.empty())
            return;
        for (auto const& step : reaction.mapped())
            run(step);
    }

    void show(std::string const& id)
    {
        std::string kind = "brainstorm";
        for (auto const& window : m_vector.at("windows")) {
            if (window.at("id") == id)
                kind = window.value("kind", kind);
        }
        m_windows[id] = m_world.makeWindow(id, WindowIdentifier::create(id, kind, id)->encoded());
        m_windows[id]->show();
    }

    void run(json const& step)
    {
        auto const what = step.at("do").get<std::string>();
        if (what == "mark")
            return note({ "mark", step.at("text") });
        if (what == "advance")
            return m_world.advance(Seconds { step.at("seconds").get<double>() });
        auto const id = step.at("window").get<std::string>();
        if (what == "show" || what == "reopen")
            return show(id);
        if (what == "close")
            return m_windows.at(id)->close();
        if (what == "liveStart")
            return m_windows.at(id)->startLiveResize();
        if (what == "liveEnd") {
            auto const frame = step.at("frame").get<std::vector<double>>();
            return m_windows.at(id)->endLiveResize({ frame[0], frame[1], frame[2], frame[3] });
        }
        if (what == "key") {
            m_windows.at(id)->resignKey();
            return m_windows.at(id)->becomeKey();
        }
        ASSERT_EQ(what, "pref");
        BrainstormWindowPreferredHeightDidChange payload { id, step.at("animate").get<bool>() };
        auto const number = [&](char const* key) {
            return step.contains(key) ? std::optional(step.at(key).get<double>()) : std::nullopt;
        };
        payload.minHeight = number("minHeight");
        payload.maxHeight = number("maxHeight");
        payload.preferredWidth = number("preferredWidth");
        payload.preferredHeight = number("preferredHeight");
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::brainstormWindowPreferredHeightDidChange(), nullptr, payload.userInfo() });
    }

    MemoryPlatform& m_world;
    json m_vector;
    std::shared_ptr<ObservedWindowManager> m_manager;
    std::map<std::string, std::shared_ptr<MemoryWindow>> m_windows;
    std::map<std::string, json> m_reactions;
    Seconds m_start {};
    json m_events = json::array();
};

class ResizeSequences : public testing::TestWithParam<std::tuple<int, Way>> { };

// Steps that nobody thought of, with hosts that answer reports by steps of their own.
class RandomSequence {
public:
    explicit RandomSequence(unsigned seed)
        : m_random(seed)
    {
    }

    json sequence()
    {
        json windows = json::array(), observers = json::array(), all = json::array();
        for (auto const* const id : { "a", "b", "c", "d" })
            windows.push_back({ { "id", id } });
        for (auto const* const report : { "WillResize", "DidResize", "DidEndLiveResize" })
            observers.push_back({ { "on", report }, { "do", steps(3) } });
        for (int i = 0; i < 12; ++i) {
            for (auto& next : steps(5))
                all.push_back(next);
            all.push_back({ { "do", "advance" }, { "seconds", below(4) * 0.1 } });
        }
        return { { "windows", windows }, { "observers", observers }, { "steps", all } };
    }

private:
    json steps(int count)
    {
        json list = json::array();
        for (int i = 0; i < count; ++i)
            list.push_back(step());
        return list;
    }

    json step()
    {
        auto const window = std::string(1, static_cast<char>('a' + below(4)));
        switch (below(14)) {
        case 0:
            return { { "do", "close" }, { "window", window } };
        case 1:
            return { { "do", "reopen" }, { "window", window } };
        case 2:
        case 3:
            return { { "do", "key" }, { "window", window } };
        case 4:
            return { { "do", "liveStart" }, { "window", window } };
        case 5:
            return { { "do", "liveEnd" }, { "window", window }, { "frame", { 90, 80, 700, 100 + 10 * below(9) } } };
        default:
            return { { "do", "pref" }, { "window", window }, { "animate", below(2) == 0 },
                { "preferredHeight", 100 + 50 * below(9) } };
        }
    }

    unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

    std::mt19937 m_random;
};

// A process has one world, so this one plays in a process of its own.
json playedElsewhere(json const& sequence, Way way)
{
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    auto const child = fork();
    if (child == 0) {
        auto const text = SequencePlayer(sequence, way).play().dump();
        for (std::size_t written = 0; written < text.size();) {
            auto const count = write(ends[1], text.data() + written, text.size() - written);
            if (count <= 0)
                _exit(1);
            written += static_cast<std::size_t>(count);
        }
        _exit(0);
    }
    close(ends[1]);
    std::string text;
    char buffer[4096];
    for (ssize_t count; (count = read(ends[0], buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    return json::parse(text, nullptr, false);
}

} // namespace

TEST_P(ResizeSequences, HappenAsTheyShould)
{
    auto const vectors = vectorsOf("C_resize_sequences.json");
    ASSERT_EQ(vectors.size(), 28u);
    auto const& [index, way] = GetParam();
    auto const& vector = vectors.at(static_cast<std::size_t>(index));
    SCOPED_TRACE(vector.at("id").get<std::string>() + ": " + vector.at("note").get<std::string>());
    auto const key = "expected_without_reentrancy_guard";
    auto const expected = vector.contains(key) ? vector.at(key) : vector.at("expected");
    auto const events = SequencePlayer(vector, way).play();
    EXPECT_TRUE(sameJSON(events, expected)) << "got\n" << events.dump(1) << "\nexpected\n" << expected.dump(1);
}

INSTANTIATE_TEST_SUITE_P(
    All, ResizeSequences, testing::Combine(testing::Range(0, 28), testing::Values(Way::Fast, Way::Plain)));

TEST(RandomResizeSequences, LookTheSameWhenAllPipelinesAreRebuilt)
{
    std::size_t events = 0;
    for (unsigned seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        auto const sequence = RandomSequence(seed).sequence();
        auto const fast = playedElsewhere(sequence, Way::Fast);
        ASSERT_EQ(fast, playedElsewhere(sequence, Way::Plain));
        events += fast.size();
    }
    EXPECT_GT(events, 1000u);
}
