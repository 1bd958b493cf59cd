#include "BenchRatios.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace qorbench
{
namespace
{
std::vector<std::pair<std::string, std::string>>& Ratios()
{
    static std::vector<std::pair<std::string, std::string>> ratios;
    return ratios;
}

// Keeps every run's time per iteration while printing as usual.
class RatioReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        // With repetitions the median stands for the benchmark; a single run stands for itself.
        for (const Run& run : runs)
        {
            if (run.error_occurred)
                continue;
            if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median")
                m_times[run.run_name.str()] = run.GetAdjustedRealTime();
            else if (run.run_type == Run::RT_Iteration && !m_medians.count(run.run_name.str()))
                m_times[run.run_name.str()] = run.GetAdjustedRealTime();
            if (run.run_type == Run::RT_Aggregate)
                m_medians.insert(run.run_name.str());
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void PrintRatios() const
    {
        std::map<std::string, std::map<std::string, double>> groups;
        for (const auto& [name, time] : m_times)
        {
            const auto slash = name.find('/');
            if (slash != std::string::npos)
                groups[name.substr(0, slash)][name.substr(slash + 1)] = time;
        }
        std::printf("\n%-16s %-28s %10s\n", "group", "ratio (time / time)", "value");
        for (const auto& [group, variants] : groups)
            for (const auto& [variant, reference] : Ratios())
            {
                const auto a = variants.find(variant), b = variants.find(reference);
                if (a != variants.end() && b != variants.end() && b->second > 0)
                    std::printf("%-16s %-28s %10.3f\n", group.c_str(), (variant + " / " + reference).c_str(),
                                a->second / b->second);
            }
    }

private:
    std::map<std::string, double> m_times;
    std::set<std::string> m_medians;
};
} // namespace

void AddRatio(const std::string& variant, const std::string& reference)
{
    Ratios().emplace_back(variant, reference);
}
} // namespace qorbench

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    qorbench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios();
    benchmark::Shutdown();
    return 0;
}
