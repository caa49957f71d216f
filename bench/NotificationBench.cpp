#include "iOS/NotificationCenter+Paneweld.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// What a post costs, against the least that could do it: a list of closures that are called one after another.

namespace {

using namespace paneweld;
using platform::Notification;
using platform::NotificationCenter;

BrainstormWindowResize const resize { 300, 91, 1440, "main-7" };

// Observers of one name, as many as asked for.
class Observers {
public:
    explicit Observers(std::int64_t count)
    {
        for (std::int64_t i = 0; i < count; ++i) {
            m_observations.emplace_back(m_center,
                NotificationCenter::Filter { NotificationName::brainstormWindowDidResize(), nullptr, {} },
                [this](Notification const& notification) {
                    benchmark::DoNotOptimize(&notification);
                    ++m_heard;
                });
        }
    }

    NotificationCenter& center() { return m_center; }

private:
    NotificationCenter m_center;
    std::vector<platform::Observation> m_observations;
    std::int64_t m_heard = 0;
};

// The floor of all: a value goes to closures.
template<typename Payload>
class Closures {
public:
    explicit Closures(std::int64_t count)
    {
        for (std::int64_t i = 0; i < count; ++i) {
            m_closures.push_back([this](Payload const& payload) {
                benchmark::DoNotOptimize(&payload);
                ++m_heard;
            });
        }
    }

    void call(Payload const& payload) const
    {
        for (auto const& closure : m_closures)
            closure(payload);
    }

private:
    std::vector<std::function<void(Payload const&)>> m_closures;
    std::int64_t m_heard = 0;
};

void post(benchmark::State& state)
{
    Observers observers(state.range(0));
    Notification const notification { NotificationName::brainstormWindowDidResize(), nullptr, resize.userInfo() };
    for (auto _ : state)
        observers.center().post(notification);
}
BENCHMARK(post)->Name("post/observers")->Arg(1)->Arg(100);

void postFloor(benchmark::State& state)
{
    Closures<Notification> const closures(state.range(0));
    Notification const notification { NotificationName::brainstormWindowDidResize(), nullptr, resize.userInfo() };
    for (auto _ : state)
        closures.call(notification);
}
BENCHMARK(postFloor)->Name("post/observers/floor")->Arg(1)->Arg(100);

// The payload is made for the post, as the plug-in does it.
void postBuilt(benchmark::State& state)
{
    Observers observers(1);
    for (auto _ : state)
        observers.center().post({ NotificationName::brainstormWindowDidResize(), nullptr, resize.userInfo() });
}
BENCHMARK(postBuilt)->Name("post/payloadBuilt");

// Its floor makes the same four values, as a struct that only its own closures understand.
void postBuiltFloor(benchmark::State& state)
{
    Closures<BrainstormWindowResize> const closures(1);
    for (auto _ : state)
        closures.call(BrainstormWindowResize(resize));
}
BENCHMARK(postBuiltFloor)->Name("post/payloadBuilt/floor");

} // namespace
