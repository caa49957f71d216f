#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Prints what Google Benchmark prints, and at the end each time as a multiple of its floor: machines differ, ratios
// of one run can be compared.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (auto const& run : runs) {
            if (run.aggregate_name.empty() || run.aggregate_name == "median")
                m_times[nameOf(run)] = run.GetAdjustedRealTime();
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%-40s %10s\n", "", "x floor");
        for (auto const& [name, time] : m_times) {
            auto const floor = m_times.find(name + "/floor");
            if (floor != m_times.end())
                std::printf("%-40s %10.2f\n", name.c_str(), time / floor->second);
        }
    }

private:
    // Who takes the time and how it is counted is no part of the name.
    static std::string nameOf(Run const& run)
    {
        auto name = run.benchmark_name();
        for (std::string_view const addition : { "/manual_time", "_median" }) {
            if (auto const place = name.rfind(addition); place != std::string::npos)
                name.erase(place, addition.size());
        }
        return name;
    }

    std::map<std::string, double> m_times;
};

} // namespace

// In short runs that take turns: where the scheduler puts two programs on two cores changes every moment, and would
// otherwise favour one side of a ratio. Arguments of the command line come later and hold.
int main(int argc, char** argv)
{
    std::vector<std::string> texts { argv[0], "--benchmark_min_time=0.05", "--benchmark_repetitions=31",
        "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true" };
    texts.insert(texts.end(), argv + 1, argv + argc);
    std::vector<char*> arguments;
    for (auto& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);
    int count = static_cast<int>(texts.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
