#include "BenchRatios.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <map>
#include <set>
#include <string>
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

// Keeps every run's CPU time per iteration while printing as usual: the benchmarks are single-threaded, and
// CPU time leaves out the time other processes on the machine take.
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
                m_times[run.run_name.str()] = run.GetAdjustedCPUTime();
            else if (run.run_type == Run::RT_Iteration && !m_medians.count(run.run_name.str()))
                m_times[run.run_name.str()] = run.GetAdjustedCPUTime();
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

    // Variants run at several instruction-set levels ("<stem>_scalar", "_sse2", "_avx2"): a higher level
    // must not be slower than a lower one. Levels without a kernel of their own run the lower level's, so a
    // difference within kNoise is measurement noise. Returns how many are slower beyond it.
    int PrintLevelCheck() const
    {
        static const std::array<const char*, 3> kLevels{"_scalar", "_sse2", "_avx2"};
        constexpr double kNoise = 0.05;
        std::map<std::string, std::map<int, double>> stems;
        for (const auto& [name, time] : m_times)
            for (int level = 0; level < int(kLevels.size()); ++level)
            {
                const std::string suffix = kLevels[std::size_t(level)];
                if (name.size() > suffix.size() && name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
                    stems[name.substr(0, name.size() - suffix.size())][level] = time;
            }
        int slower = 0;
        std::printf("\n%-40s %12s %12s %12s  %s\n", "levels (CPU ns per iteration)", "scalar", "sse2", "avx2",
                    "check (SLOWER: a higher level more than 5 % slower)");
        for (const auto& [stem, times] : stems)
        {
            std::string verdict = "ok";
            for (const auto& [low, lowTime] : times)
                for (const auto& [high, highTime] : times)
                    if (high > low && highTime > lowTime * (1 + kNoise))
                    {
                        verdict = std::string("SLOWER: ") + (kLevels[std::size_t(high)] + 1) + " > " +
                                  (kLevels[std::size_t(low)] + 1);
                        ++slower;
                    }
            std::printf("%-40s", stem.c_str());
            for (int level = 0; level < int(kLevels.size()); ++level)
            {
                const auto t = times.find(level);
                if (t == times.end())
                    std::printf(" %12s", "-");
                else
                    std::printf(" %12.1f", t->second);
            }
            std::printf("  %s\n", verdict.c_str());
        }
        return slower;
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

namespace
{
// The processor model as the kernel reports it: timings and level comparisons differ between vendors.
std::string ProcessorModel()
{
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line))
        if (line.rfind("model name", 0) == 0)
        {
            const auto colon = line.find(':');
            return colon == std::string::npos ? line : line.substr(colon + 2);
        }
    return "unknown";
}
} // namespace

int main(int argc, char** argv)
{
    std::printf("processor: %s\n", ProcessorModel().c_str());
    std::fflush(stdout);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    qorbench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.PrintRatios();
    const int slower = reporter.PrintLevelCheck();
    if (slower)
        std::printf("%d case(s) where a higher instruction-set level is slower than a lower one\n", slower);
    benchmark::Shutdown();
    return 0;
}
