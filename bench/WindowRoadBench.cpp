#include "backends/memory/Memory.h"
#include "iOS/NotificationCenter+Paneweld.h"
#include "iOS/WindowIdentifier.h"
#include "iOS/WindowManager.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

namespace {

using namespace paneweld;

std::string const title = WindowIdentifier::brainstorm("main-7", "Ideas for the summer / 2026")->encoded();

// A tag read out of a title, as at every show of a window. The floor is a general JSON library on the same text.
void identifierFromTitle(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(WindowIdentifier::from(title));
}
BENCHMARK(identifierFromTitle);

void identifierFromTitleFloor(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(title));
}
BENCHMARK(identifierFromTitleFloor)->Name("identifierFromTitle/floor");

// The world with one brainstorm window in it; the process has one.
struct Road {
    backends::MemoryPlatform& world = backends::MemoryPlatform::install();
    std::shared_ptr<WindowManager> manager = WindowManager::create(world);
    std::shared_ptr<backends::MemoryWindow> panel = world.makeWindow("b1", title);

    Road()
    {
        manager->observeNotifications();
        panel->show();
        world.advance(platform::Seconds { 1 });
    }

    static Road& shared()
    {
        static Road road;
        return road;
    }
};

// From the host's post to the frame, with both reports, in the memory world. The floor is three bare posts: one in,
// two out.
void requestToFrame(benchmark::State& state)
{
    auto& road = Road::shared();
    BrainstormWindowPreferredHeightDidChange request { "main-7", false };
    double height = 100;
    for (auto _ : state) {
        request.preferredHeight = height = height > 1000 ? 100 : height + 1;
        platform::NotificationCenter::defaultCenter().post(
            { NotificationName::brainstormWindowPreferredHeightDidChange(), nullptr, request.userInfo() });
        road.world.ledger().clear();
    }
}
BENCHMARK(requestToFrame);

void requestToFrameFloor(benchmark::State& state)
{
    Road::shared();
    platform::NotificationCenter center;
    int heard = 0;
    platform::Observation const observation(
        center, { NotificationName::brainstormWindowWillResize(), nullptr, {} }, [&](auto const&) { ++heard; });
    BrainstormWindowPreferredHeightDidChange request { "main-7", false };
    request.preferredHeight = 100;
    for (auto _ : state) {
        for (int i = 0; i < 3; ++i)
            center.post({ NotificationName::brainstormWindowWillResize(), nullptr, request.userInfo() });
    }
    benchmark::DoNotOptimize(heard);
}
BENCHMARK(requestToFrameFloor)->Name("requestToFrame/floor");

} // namespace
