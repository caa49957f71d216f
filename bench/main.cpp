#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <string_view>

namespace {

// Prints what Google Benchmark prints, and at the end each time as a multiple of its floor: machines differ, ratios
// of one run can be compared.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (auto const& run : runs)
            m_times[nameOf(run)] = run.GetAdjustedRealTime();
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
    // Who takes the time is no part of the name.
    static std::string nameOf(Run const& run)
    {
        auto name = run.benchmark_name();
        constexpr std::string_view manual = "/manual_time";
        if (auto const place = name.rfind(manual); place != std::string::npos)
            name.erase(place, manual.size());
        return name;
    }

    std::map<std::string, double> m_times;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
