#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

// What it costs a host to load the plug-in, against loading the two libraries that it cannot do without. Each time in
// a new process.

namespace {

void load(benchmark::State& state, std::string const& libraries)
{
    for (auto _ : state) {
        auto* const program = popen((PANEWELD_BENCH_PROGRAMS "/load " + libraries).c_str(), "r");
        double seconds = 0;
        long kilobytes = 0;
        if (!program || std::fscanf(program, "%lf %ld", &seconds, &kilobytes) != 2 || pclose(program) != 0) {
            std::fprintf(stderr, "bench: %s cannot be loaded\n", libraries.c_str());
            std::exit(1);
        }
        state.SetIterationTime(seconds);
        state.counters["privateKB"] = static_cast<double>(kilobytes);
    }
}

constexpr int loads = 20;

BENCHMARK_CAPTURE(load, plugin, "'" PANEWELD_BENCH_LIBRARY "' '" PANEWELD_BENCH_BUNDLE "/Paneweld'")
    ->Name("load")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(loads);
BENCHMARK_CAPTURE(load, needed, "libxcb.so.1 libsystemd.so.0")
    ->Name("load/floor")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(loads);

} // namespace
