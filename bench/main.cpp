#include <benchmark/benchmark.h>

#include <cctype>
#include <cstdio>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Prints what Google Benchmark prints, and at the end each time and each counter as a multiple of its floor: machines
// differ, ratios of one run can be compared.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (auto const& run : runs) {
            if (!run.aggregate_name.empty() && run.aggregate_name != "median")
                continue;
            auto& measures = m_measures[nameOf(run)];
            measures["time"] = run.GetAdjustedRealTime();
            // What others make of the cores shows in the time, and hardly in this.
            if (run.run_name.time_type.empty())
                measures["cpu"] = run.GetAdjustedCPUTime();
            for (auto const& [counter, value] : run.counters)
                measures[counter] = value;
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::printf("\n%-50s %12s %12s %10s\n", "", "result", "floor", "x floor");
        for (auto const& [name, measures] : m_measures) {
            auto const floor = m_measures.find(name + "/floor");
            if (floor == m_measures.end())
                continue;
            for (auto const& [measure, value] : measures)
                std::printf("%-50s %12.2f %12.2f %10.2f\n", (name + " " + measure).c_str(), value,
                    floor->second.at(measure), value / floor->second.at(measure));
        }
    }

private:
    // Who takes the time and how it is counted is no part of the name.
    static std::string nameOf(Run const& run)
    {
        auto name = run.benchmark_name();
        for (std::string_view const addition : { "/manual_time", "_median", "/iterations:", "/repeats:" }) {
            auto const place = name.rfind(addition);
            if (place == std::string::npos)
                continue;
            auto end = place + addition.size();
            while (addition.ends_with(':') && end < name.size() && std::isdigit(static_cast<unsigned char>(name[end])))
                ++end;
            name.erase(place, end - place);
        }
        // The arguments stand behind the name that a benchmark was given.
        std::string_view const floor = "/floor";
        if (auto const place = name.find(floor); place != std::string::npos)
            name = name.substr(0, place) + name.substr(place + floor.size()) + std::string(floor);
        return name;
    }

    std::map<std::string, std::map<std::string, double>> m_measures;
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
