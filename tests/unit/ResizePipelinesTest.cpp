#include "iOS/ResizePipelines.h"

#include "platform/combine/CurrentValueSubject.h"
#include "platform/combine/PassthroughSubject.h"
#include "tests/support/PlainResizePipelines.h"

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

using namespace paneweld;

namespace {

ResizeBrainstormWindow request(std::string id, double height)
{
    ResizeBrainstormWindow value { std::move(id) };
    value.preferredHeight = height;
    return value;
}

using Step = std::variant<ResizeBrainstormWindow, IsWindowAnimating, WindowAction>;

// One way to run the pipelines, with a sink that takes its next steps from a list each time something comes out.
class Way {
public:
    enum class Kind { Plain, Fast };

    explicit Way(Kind kind)
    {
        auto const sink = [this](ResizeBrainstormWindow const& value) { deliver(value); };
        if (kind == Kind::Plain) {
            m_plain.emplace(m_requests.publisher(), m_flags.publisher(), sink);
            return;
        }
        m_fast.emplace(sink);
        m_subscriptions.push_back(
            m_requests.publisher().sink([this](auto const& value) { m_fast->receiveRequest(value); }));
        m_subscriptions.push_back(m_flags.publisher().sink([this](auto const& value) { m_fast->receiveFlag(value); }));
    }

    // What each delivery does, the first delivery first.
    std::deque<std::vector<Step>> reactions {};
    // What came out, and when its reaction was done.
    std::vector<std::string> log {};

    void run(Step const& step)
    {
        if (auto const* const value = std::get_if<ResizeBrainstormWindow>(&step))
            m_requests.send(*value);
        else if (auto const* const flag = std::get_if<IsWindowAnimating>(&step))
            m_flags.send(*flag);
        else if (m_plain)
            m_plain->rebuild(std::get<WindowAction>(step));
        else
            m_fast->rebuild(std::get<WindowAction>(step), m_requests.value());
    }

private:
    void deliver(ResizeBrainstormWindow const& value)
    {
        // Taken before the reaction, so that a value which changes under way shows.
        auto const text = value.windowIdentifier + " " + std::to_string(value.preferredHeight.value_or(-1));
        log.push_back(text);
        if (reactions.empty())
            return;
        auto const steps = reactions.front();
        reactions.pop_front();
        for (auto const& step : steps)
            run(step);
        log.push_back("end of " + value.windowIdentifier + " " + std::to_string(value.preferredHeight.value_or(-1)));
    }

    platform::CurrentValueSubject<ResizeBrainstormWindow> m_requests { ResizeBrainstormWindow {} };
    platform::PassthroughSubject<IsWindowAnimating> m_flags;
    std::optional<PlainResizePipelines> m_plain;
    std::optional<ResizePipelines> m_fast;
    std::vector<platform::Cancellable> m_subscriptions;
};

// What both ways let out, which must be the same.
std::vector<std::string> play(std::vector<Step> const& steps, std::deque<std::vector<Step>> const& reactions = {})
{
    Way plain(Way::Kind::Plain), fast(Way::Kind::Fast);
    plain.reactions = fast.reactions = reactions;
    for (auto const& step : steps) {
        plain.run(step);
        fast.run(step);
    }
    EXPECT_EQ(plain.log, fast.log);
    return fast.log;
}

Step show(std::string id) { return WindowAction::willShow(std::move(id)); }
Step close(std::string id) { return WindowAction::willClose(std::move(id)); }
Step up(std::string id) { return IsWindowAnimating { std::move(id), true }; }
Step down(std::string id) { return IsWindowAnimating { std::move(id), false }; }

using Log = std::vector<std::string>;

Log const firstOfA { "a 1.000000" };

// Few ids, heights and kinds of step, so that everything meets everything.
class RandomSteps {
public:
    explicit RandomSteps(unsigned seed)
        : m_random(seed)
    {
    }

    Step step(bool inReaction)
    {
        // A rebuild inside a delivery ends everything under way: often enough, and not always.
        auto const kind = below(inReaction ? 30u : 20u);
        auto id = std::string(1, static_cast<char>('a' + below(4)));
        if (kind == 0)
            return show(std::move(id));
        if (kind == 1)
            return close(std::move(id));
        if (kind == 2)
            return up(std::move(id));
        if (kind < 11)
            return down(std::move(id));
        return request(std::move(id), below(3));
    }

    std::vector<Step> steps(unsigned count, bool inReaction)
    {
        std::vector<Step> list;
        for (unsigned i = 0; i < count; ++i)
            list.push_back(step(inReaction));
        return list;
    }

    unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

private:
    std::mt19937 m_random;
};

} // namespace

TEST(ResizePipelines, ARequestComesOutWhenItsFlagIsDownAndOnce)
{
    EXPECT_EQ(play({ show("a"), request("a", 1) }), Log {});
    EXPECT_EQ(play({ show("a"), down("a"), request("a", 1), request("a", 1), down("a") }), firstOfA);
    EXPECT_EQ(play({ show("a"), up("a"), request("a", 1), down("a"), down("a") }), firstOfA);
    EXPECT_EQ(play({ down("a"), request("a", 1), show("a"), close("a") }), Log {});
}

TEST(ResizePipelines, AFlagOfAnotherWindowShutsThePipeline)
{
    EXPECT_EQ(play({ show("a"), show("b"), down("a"), down("b"), request("a", 1) }), Log {});
    EXPECT_EQ(play({ show("a"), show("b"), down("a"), down("b"), request("a", 1), down("a") }), firstOfA);
}

TEST(ResizePipelines, ARebuildForgetsTheFlagAndWhatWasLetThrough)
{
    Log const twice { "a 1.000000", "a 1.000000" };
    EXPECT_EQ(play({ show("a"), down("a"), request("a", 1), show("b"), request("a", 1) }), firstOfA);
    EXPECT_EQ(play({ show("a"), down("a"), request("a", 1), show("b"), down("a") }), twice);
}

// A send from inside a delivery reaches all pipelines at once; the send that it interrupted then goes on to those
// behind, and so the older request is what they have last.
TEST(ResizePipelines, BehindThePipelineThatDeliversTheOlderRequestArrivesLast)
{
    std::deque<std::vector<Step>> const asksForC { { request("c", 9) } };
    Log const onlyB { "b 1.000000", "end of b 1.000000" };
    EXPECT_EQ(play({ show("a"), show("b"), show("c"), down("b"), request("b", 1), down("c") }, asksForC), onlyB);

    std::deque<std::vector<Step>> const asksForA { { request("a", 9) } };
    Log const thenA { "b 1.000000", "end of b 1.000000", "a 9.000000" };
    EXPECT_EQ(play({ show("a"), show("b"), show("c"), down("b"), request("b", 1), down("a") }, asksForA), thenA);
}

TEST(ResizePipelines, AHeldBackRequestIsStillThereForAFlagSentFromADelivery)
{
    // While b delivers, c has not heard the new request yet and lets the one before it out.
    std::deque<std::vector<Step>> const lowersC { { down("c") } };
    Log const nested { "b 1.000000", "c 7.000000", "end of b 1.000000" };
    EXPECT_EQ(play({ show("b"), show("c"), request("c", 7), down("b"), request("b", 1) }, lowersC), nested);
}

TEST(ResizePipelines, ARebuildFromADeliveryEndsWhatIsUnderWay)
{
    std::deque<std::vector<Step>> const showsD { { show("d"), request("c", 9) } };
    Log const both { "b 1.000000", "end of b 1.000000", "c 9.000000" };
    EXPECT_EQ(play({ show("b"), show("c"), down("b"), request("b", 1), down("c") }, showsD), both);
}

TEST(ResizePipelines, RandomSequencesComeOutOfThePlainWayAlike)
{
    std::size_t delivered = 0, nested = 0;
    for (unsigned seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomSteps random(seed);
        std::vector<Step> steps { show("a"), show("b"), show("c"), show("d") };
        for (auto const& step : random.steps(80, false))
            steps.push_back(step);
        std::deque<std::vector<Step>> reactions;
        for (unsigned i = 0; i < 40; ++i)
            reactions.push_back(random.steps(random.below(6), true));
        auto const log = play(steps, reactions);
        int depth = 0;
        for (auto const& line : log) {
            depth += line.starts_with("end of") ? -1 : 1;
            delivered += line.starts_with("end of") ? 0u : 1u;
            nested += depth > 1 ? 1u : 0u;
        }
        if (HasFailure())
            return;
    }
    // Worth playing only when much comes out, and much of it from inside another delivery.
    EXPECT_GT(delivered, 2000u);
    EXPECT_GT(nested, 200u);
}
