#include "tests/support/Vectors.h"
#include "tests/support/World.h"

#include <cmath>
#include <map>

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

// Tells when the pipelines are rebuilt.
class ObservedWindowManager : public WindowManager {
public:
    using Listener = std::function<void(std::set<std::string> const&)>;

    static std::shared_ptr<ObservedWindowManager> create(platform::Platform& platform, Listener listener)
    {
        std::shared_ptr<ObservedWindowManager> manager(new ObservedWindowManager(platform, std::move(listener)));
        manager->observeWindowActions();
        return manager;
    }

protected:
    void rebuildResizePipelines(std::set<std::string> const& identifiers) override
    {
        m_listener(identifiers);
        WindowManager::rebuildResizePipelines(identifiers);
    }

private:
    ObservedWindowManager(platform::Platform& platform, Listener listener)
        : WindowManager(platform)
        , m_listener(std::move(listener))
    {
    }

    Listener m_listener;
};

// Plays one example in a world of its own, and writes down what a host would notice.
class SequencePlayer {
public:
    explicit SequencePlayer(json const& vector)
        : m_world(MemoryPlatform::install())
        , m_vector(vector)
    {
        // The styling's first frame is then {100, 84, 640, 91}, as the examples have it.
        m_world.setMainScreen(platform::NSScreen { { 0, 0, 840, 1600 }, { 0, 0, 840, 1600 } });
        m_world.ledger().setListener([this](auto const& line) { hear(line.text); });
        platform::NotificationCenter::defaultCenter().setTap([this](auto const& notification) { hear(notification); });
        m_manager = ObservedWindowManager::create(m_world, [this](auto const& ids) { note({ "rebuild", ids }); });
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
            userInfo[key] = asJSON(value);
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

class ResizeSequences : public testing::TestWithParam<int> { };

} // namespace

TEST_P(ResizeSequences, HappenAsTheyShould)
{
    auto const vectors = vectorsOf("C_resize_sequences.json");
    ASSERT_EQ(vectors.size(), 28u);
    auto const& vector = vectors.at(static_cast<std::size_t>(GetParam()));
    SCOPED_TRACE(vector.at("id").get<std::string>() + ": " + vector.at("note").get<std::string>());
    auto const key = "expected_without_reentrancy_guard";
    auto const expected = vector.contains(key) ? vector.at(key) : vector.at("expected");
    auto const events = SequencePlayer(vector).play();
    EXPECT_TRUE(sameJSON(events, expected)) << "got\n" << events.dump(1) << "\nexpected\n" << expected.dump(1);
}

INSTANTIATE_TEST_SUITE_P(All, ResizeSequences, testing::Range(0, 28));
