// Runs each comparison many times, its two sides mixed at random so that a busy machine disturbs both alike, and prints
// the ratio of their medians. Takes the usual options of google-benchmark.

#include "Help.h"

#include <benchmark/benchmark.h>
#include <iomanip>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

struct Median
{
    double real = 0;
    double cpu = 0;
};

/// Prints as the console reporter does and keeps the medians.
class MedianKeeper : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name == "median")
                m_medians[run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args)] = {
                    run.GetAdjustedRealTime(), run.GetAdjustedCPUTime()};
        }
    }

    void printRatio(const std::string& name, double aim, const std::string& other = "cpprestsdk") const
    {
        const auto library = m_medians.find(name + "/library");
        const auto byHand = m_medians.find(name + "/" + other);
        if (library == m_medians.end() || byHand == m_medians.end())
            return;
        std::cout << std::left << std::setw(16) << name << std::fixed << std::setprecision(3) << " library / " << other << ":  elapsed "
                  << library->second.real / byHand->second.real << "  processor " << library->second.cpu / byHand->second.cpu << "  (aim "
                  << aim << ")\n";
    }

    /// What the token file adds to the requests alone.
    void printShareOfTokenFile(double aimMicroseconds) const
    {
        const auto requests = m_medians.find("Permission/requests");
        if (requests == m_medians.end())
            return;
        for (const char* entries : {"1", "10000"}) {
            const auto library = m_medians.find(std::string("Permission/library/") + entries);
            if (library != m_medians.end())
                std::cout << "Permission       a token file of " << entries << " adds " << std::fixed << std::setprecision(0)
                          << library->second.real - requests->second.real << " us  (aim " << aimMicroseconds << ")\n";
        }
    }

private:
    std::map<std::string, Median> m_medians;
};

constexpr const char* help = R"([OPTION...]
  Runs comparisons of the library with the same work done by hand, and prints the ratio of their medians.
  Takes the usual options of google-benchmark, of which these are the most useful:
    --benchmark_filter=TEXT      only what has the text in its name, as GetAllProjects
    --benchmark_list_tests=true  tells the names
    --benchmark_repetitions=N    21 unless told otherwise
  bench/README.md tells what is compared and how the figures are to be read.)";

} // namespace

int main(int argc, char** argv)
{
    if (orlo::bench::answersForItself(argc, argv, "OrloBench", help))
        return 0;
    std::string repetitions = "--benchmark_repetitions=21";
    std::string interleaved = "--benchmark_enable_random_interleaving=true";
    std::string aggregates = "--benchmark_report_aggregates_only=true";
    std::vector<char*> arguments{argv[0], repetitions.data(), interleaved.data(), aggregates.data()};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    MedianKeeper reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio("GetDatasetInfo", 1.05);
    reporter.printRatio("GetAllProjects", 1.25);
    reporter.printRatio("GetSpaceConfig", 1.5);
    reporter.printRatio("GetIssueList", 1.5);
    reporter.printRatio("AxisGrid", 1.5, "rapidjson");
    reporter.printShareOfTokenFile(5000);
    return 0;
}
