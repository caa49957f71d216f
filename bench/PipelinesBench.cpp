#include "iOS/ResizePipelines.h"
#include "iOS/WindowState.h"
#include "platform/combine/CurrentValueSubject.h"
#include "platform/combine/Filter.h"
#include "platform/combine/PassthroughSubject.h"
#include "platform/combine/RemoveDuplicates.h"
#include "tests/support/PlainResizePipelines.h"

#include <benchmark/benchmark.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

// Shows, requests and flags with a host of windows on the screen, against a list of pipelines of which each looks at
// everything, and against tearing all of them down and building them again at each show.

namespace {

using namespace paneweld;

constexpr int windows = 10000;

std::string idOf(int window) { return "window-" + std::to_string(window); }

// The streams with the pipelines behind them, connected as the window manager connects them. `Build` is told of each
// change of the set.
class Streams {
public:
    template<typename Rebuild>
    explicit Streams(Rebuild rebuild)
    {
        m_shows
            = actions.publisher()
                  .then(platform::removeDuplicates<WindowAction>())
                  .then(platform::filter<WindowAction>([this](auto const& action) { return m_state.apply(action); }))
                  .sink([this, rebuild](WindowAction const& action) { rebuild(*this, action); });
    }

    platform::PassthroughSubject<WindowAction> actions;
    platform::CurrentValueSubject<ResizeBrainstormWindow> requests { ResizeBrainstormWindow {} };
    platform::PassthroughSubject<IsWindowAnimating> flags;

    void show(int count)
    {
        for (int i = 0; i < count; ++i) {
            actions.send(WindowAction::willShow(idOf(i)));
            flags.send({ idOf(i), false });
        }
    }

private:
    State m_state;
    platform::Cancellable m_shows;
};

class Shown {
public:
    explicit Shown(int count)
        : m_pipelines([this](auto const&) { ++delivered; })
        , streams([this](Streams& source, WindowAction const& change) {
            m_pipelines.rebuild(change, source.requests.value());
        })
    {
        m_subscriptions.push_back(
            streams.requests.publisher().sink([this](auto const& value) { m_pipelines.receiveRequest(value); }));
        m_subscriptions.push_back(
            streams.flags.publisher().sink([this](auto const& value) { m_pipelines.receiveFlag(value); }));
        streams.show(count);
    }

    std::int64_t delivered = 0;

private:
    ResizePipelines m_pipelines;

public:
    Streams streams;

private:
    std::vector<platform::Cancellable> m_subscriptions;
};

// The least that each of many pipelines can do with a value: keep it when it is its own.
struct Loop {
    struct Pipeline {
        std::string id;
        ResizeBrainstormWindow last {};
        bool isOpen = false;
    };

    std::vector<Pipeline> pipelines;

    Loop()
    {
        for (int i = 0; i < windows; ++i)
            pipelines.push_back({ idOf(i) });
    }

    template<typename Take>
    void send(std::string const& id, Take take)
    {
        for (auto& pipeline : pipelines) {
            if (pipeline.id == id)
                take(pipeline);
        }
    }
};

ResizeBrainstormWindow requestFor(int window)
{
    ResizeBrainstormWindow request { idOf(window) };
    request.preferredHeight = 300;
    return request;
}

// A request to the window that had the last flag: it comes out, each time another one.
void request(benchmark::State& state)
{
    Shown shown(windows);
    auto value = requestFor(windows - 1);
    for (auto _ : state) {
        *value.preferredHeight += 1;
        shown.streams.requests.send(value);
    }
    if (shown.delivered < static_cast<std::int64_t>(state.iterations()))
        state.SkipWithError("a request was lost");
}
BENCHMARK(request)->Name("tenThousandWindows/requestDelivered");

// A request that has to wait for its window's flag.
void heldRequest(benchmark::State& state)
{
    Shown shown(windows);
    auto value = requestFor(windows / 2);
    for (auto _ : state) {
        *value.preferredHeight += 1;
        shown.streams.requests.send(value);
    }
}
BENCHMARK(heldRequest)->Name("tenThousandWindows/requestHeld");

void requestFloor(benchmark::State& state)
{
    Loop loop;
    auto value = requestFor(windows / 2);
    for (auto _ : state) {
        *value.preferredHeight += 1;
        loop.send(value.windowIdentifier, [&](auto& pipeline) { pipeline.last = value; });
    }
}
BENCHMARK(requestFloor)->Name("tenThousandWindows/requestDelivered/floor");
BENCHMARK(requestFloor)->Name("tenThousandWindows/requestHeld/floor");

void flag(benchmark::State& state)
{
    Shown shown(windows);
    IsWindowAnimating value { idOf(windows / 2), false };
    for (auto _ : state) {
        value.isAnimating = !value.isAnimating;
        shown.streams.flags.send(value);
    }
}
BENCHMARK(flag)->Name("tenThousandWindows/flag");

void flagFloor(benchmark::State& state)
{
    Loop loop;
    IsWindowAnimating value { idOf(windows / 2), false };
    for (auto _ : state) {
        value.isAnimating = !value.isAnimating;
        loop.send(value.windowIdentifier, [&](auto& pipeline) { pipeline.isOpen = !value.isAnimating; });
    }
}
BENCHMARK(flagFloor)->Name("tenThousandWindows/flag/floor");

void show(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Shown(static_cast<int>(state.range(0))).delivered);
}
BENCHMARK(show)->Name("showOneAfterAnother")->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(show)->Name("showOneAfterAnother")->Arg(windows)->Unit(benchmark::kMillisecond);

// The plain way. It grows with the square, so that ten thousand are not waited for.
void showFloor(benchmark::State& state)
{
    for (auto _ : state) {
        std::optional<PlainResizePipelines> pipelines;
        Streams streams([&](Streams&, WindowAction const& change) { pipelines->rebuild(change); });
        pipelines.emplace(streams.requests.publisher(), streams.flags.publisher(), [](auto const&) {});
        streams.show(static_cast<int>(state.range(0)));
    }
}
BENCHMARK(showFloor)->Name("showOneAfterAnother/floor")->Arg(1000)->Unit(benchmark::kMillisecond)->Repetitions(3);

} // namespace
