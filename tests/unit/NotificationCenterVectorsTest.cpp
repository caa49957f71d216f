#include "platform/foundation/NotificationCenter.h"
#include "platform/runtime/NSObject.h"
#include "tests/support/Vectors.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using nlohmann::json;
using namespace platform;

namespace {

// Plays the operations of one example on a centre of its own.
class CentrePlayer {
public:
    json play(json const& operations)
    {
        for (auto const& operation : operations)
            run(operation);
        return m_calls;
    }

private:
    struct Reaction {
        int times = 0;
        json operations;
    };

    std::shared_ptr<NSObject> object(json const& name)
    {
        if (name.is_null())
            return nullptr;
        auto& object = m_objects[name.get<std::string>()];
        if (!object)
            object = std::make_shared<NSObject>();
        return object;
    }

    std::string nameOf(std::shared_ptr<NSObject> const& wanted) const
    {
        for (auto const& [name, object] : m_objects) {
            if (object == wanted)
                return name;
        }
        return "?";
    }

    void run(json const& operation)
    {
        auto const kind = operation.at("op").get<std::string>();
        if (kind == "mark") {
            m_calls.push_back({ "mark", operation.at("text"), nullptr });
        } else if (kind == "post") {
            m_center.post({ NotificationName(operation.at("name")), object(operation.at("object")), {} });
        } else if (kind == "when") {
            m_reactions[operation.at("observer")] = { operation.value("times", 1), operation.at("do") };
        } else if (kind == "add") {
            add(operation);
        } else if (kind == "remove") {
            m_center.removeObserver(*object("observer " + operation.at("observer").get<std::string>()));
        } else {
            FAIL() << "unknown operation " << kind;
        }
    }

    void add(json const& operation)
    {
        auto const observer = operation.at("observer").get<std::string>();
        NotificationCenter::Filter filter;
        if (!operation.at("name").is_null())
            filter.name = NotificationName(operation.at("name"));
        filter.object = object(operation.at("object"));
        m_center.addObserver(
            object("observer " + observer), filter, [this, observer](NSObject&, Notification const& notification) {
                auto const sender = notification.object ? json(nameOf(notification.object)) : json(nullptr);
                m_calls.push_back({ observer, notification.name.rawValue(), sender });
                auto& reaction = m_reactions[observer];
                if (reaction.times-- <= 0)
                    return;
                auto const operations = reaction.operations;
                for (auto const& next : operations)
                    run(next);
            });
    }

    NotificationCenter m_center;
    std::map<std::string, std::shared_ptr<NSObject>> m_objects;
    std::map<std::string, Reaction> m_reactions;
    json m_calls = json::array();
};

} // namespace

TEST(NotificationCenterVectors, AllSequences)
{
    auto const vectors = vectorsOf("D_notification_center.json");
    ASSERT_EQ(vectors.size(), 14u);
    for (auto const& vector : vectors) {
        SCOPED_TRACE(vector.at("id").get<std::string>() + ": " + vector.at("note").get<std::string>());
        EXPECT_EQ(CentrePlayer().play(vector.at("ops")), vector.at("expected"));
    }
}

TEST(NotificationCenter, AnObserverRemovedBeforeItsTurnIsNotCalled)
{
    NotificationCenter center;
    NotificationName const name("N");
    int calls = 0;
    std::shared_ptr<ObservationToken> second;
    auto const first = center.addObserver({ name, nullptr, {} }, [&](auto const&) { center.removeObserver(second); });
    second = center.addObserver({ name, nullptr, {} }, [&](auto const&) { ++calls; });
    center.post({ name, nullptr, {} });
    EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, DroppingATokenEndsNothingButRemovingItDoes)
{
    NotificationCenter center;
    NotificationName const name("N");
    int calls = 0;
    auto token = center.addObserver({ name, nullptr, {} }, [&](auto const&) { ++calls; });
    auto const copy = token;
    token = nullptr;
    center.post({ name, nullptr, {} });
    EXPECT_EQ(calls, 1);
    center.removeObserver(copy);
    center.post({ name, nullptr, {} });
    EXPECT_EQ(calls, 1);
}

TEST(NotificationCenter, AWeaklyHeldObserverThatIsGoneHearsNothing)
{
    NotificationCenter center;
    NotificationName const name("N");
    int calls = 0;
    auto observer = std::make_shared<NSObject>();
    center.addObserver(observer, { name, nullptr, {} }, [&](auto&, auto const&) { ++calls; });
    observer = nullptr;
    center.post({ name, nullptr, {} });
    EXPECT_EQ(calls, 0);
}

TEST(NotificationCenter, AnObservationEndsWithItsOwner)
{
    NotificationCenter center;
    NotificationName const name("N");
    int calls = 0;
    {
        Observation const observation(center, { name, nullptr, {} }, [&](auto const&) { ++calls; });
        center.post({ name, nullptr, {} });
    }
    center.post({ name, nullptr, {} });
    EXPECT_EQ(calls, 1);
}

TEST(NotificationCenter, TheTapHearsEveryPostBeforeItsObservers)
{
    NotificationCenter center;
    std::vector<std::string> heard;
    auto const token
        = center.addObserver({ NotificationName("N"), nullptr, {} }, [&](auto const&) { heard.push_back("observer"); });
    center.setTap([&](Notification const& notification) { heard.push_back("tap " + notification.name.rawValue()); });
    center.post({ NotificationName("N"), nullptr, {} });
    center.post({ NotificationName("M"), nullptr, {} });
    EXPECT_EQ(heard, (std::vector<std::string> { "tap N", "observer", "tap M" }));
}

TEST(NotificationCenter, AnObserverRemovedInANestedPostIsNotCalledByTheOuterOne)
{
    NotificationCenter center;
    std::string heard;
    std::optional<Observation> third;
    Observation const first(center, { NotificationName("outer"), nullptr, {} }, [&](auto const&) {
        heard += "1";
        center.post({ NotificationName("inner"), nullptr, {} });
    });
    Observation const second(center, { NotificationName("inner"), nullptr, {} }, [&](auto const&) {
        heard += "2";
        third.reset();
    });
    third.emplace(center, NotificationCenter::Filter { NotificationName("outer"), nullptr, {} },
        [&](auto const&) { heard += "3"; });
    center.post({ NotificationName("outer"), nullptr, {} });
    EXPECT_EQ(heard, "12");
}

TEST(NotificationCenter, AnObserverAddedUnderWayHearsTheNestedPostAndNotTheOuterOne)
{
    NotificationCenter center;
    std::string heard;
    std::vector<Observation> added;
    Observation const first(center, { NotificationName("outer"), nullptr, {} }, [&](auto const&) {
        added.emplace_back(
            center, NotificationCenter::Filter {}, [&](auto const& n) { heard += n.name.rawValue() + " "; });
        center.post({ NotificationName("inner"), nullptr, {} });
    });
    center.post({ NotificationName("outer"), nullptr, {} });
    EXPECT_EQ(heard, "inner ");
}

TEST(NotificationCenter, ATapMayEndObservations)
{
    NotificationCenter center;
    int heard = 0;
    std::vector<Observation> observations;
    for (int i = 0; i < 5; ++i)
        observations.emplace_back(center, NotificationCenter::Filter {}, [&](auto const&) { ++heard; });
    center.setTap([&](auto const&) { observations.resize(2); });
    center.post({ NotificationName("any"), nullptr, {} });
    EXPECT_EQ(heard, 2);
}

TEST(NotificationCenter, AHandlerThatEndsItselfLivesToItsEndAndTakesOthersWithIt)
{
    NotificationCenter center;
    int heard = 0;
    auto const chained = std::make_shared<std::optional<Observation>>();
    chained->emplace(center, NotificationCenter::Filter {}, [&](auto const&) { heard += 100; });
    std::optional<Observation> own;
    auto const text = std::make_shared<std::string>("still here");
    own.emplace(center, NotificationCenter::Filter {},
        [&own, &heard, chained, kept = std::weak_ptr<std::string>(text)](auto const&) {
            own.reset();
            heard += kept.expired() ? 1000 : 1;
        });
    center.post({ NotificationName("any"), nullptr, {} });
    EXPECT_EQ(heard, 101);
    chained->reset();
    center.post({ NotificationName("any"), nullptr, {} });
    EXPECT_EQ(heard, 101);
}
