// The tree of archive packages joined from records: 100 and 1,000 packages with five versions each, of which the newest names 20 units of
// three datasets. Everything comes in random order. Beside it the same records copied, which is as linear as the machine's caches let
// anything be. The counter tells the time for each unit of the tree.

#include <OrloProjectManager/Resources/ArchivePackage.h>

#include <algorithm>
#include <benchmark/benchmark.h>
#include <map>
#include <random>

namespace orlo::bench {
namespace {

constexpr int versionCount = 5;
constexpr int unitCount = 20;
constexpr int datasetCount = 3;

/// What the platform answers about so many packages.
struct ArchiveAnswers
{
    explicit ArchiveAnswers(int packageCount)
    {
        for (int package = 0; package < packageCount; ++package)
            addPackage(L"8a1f0c5e-77d3-4f0e-9f6b-" + std::to_wstring(100000000000 + package));
        std::mt19937 random(20261122);
        std::shuffle(packageVersions.begin(), packageVersions.end(), random);
        std::shuffle(unitVersions.begin(), unitVersions.end(), random);
        std::shuffle(datasetVersions.begin(), datasetVersions.end(), random);
    }

    void addPackage(const std::wstring& id)
    {
        packages.emplace_back().packageId = id;
        for (int version = 1; version <= versionCount; ++version) {
            http::ORLOHTTPPayloadArchivePackageVersion& record = packageVersions.emplace_back();
            record.packageId = id;
            record.version = version;
            for (int unit = 0; unit < unitCount; ++unit)
                record.contents.push_back({std::to_wstring(addUnit(version == versionCount)), id, L"IntegratePackage"});
        }
    }

    int addUnit(bool isNewest)
    {
        http::ORLOHTTPPayloadArchiveUnitVersion& unit = unitVersions.emplace_back();
        unit.id = static_cast<int>(unitVersions.size());
        unit.packageId = L"0d2b6a91-1c42-4c55-8a7e-" + std::to_wstring(100000000000 + unit.id);
        unit.integratePackageName = L"结构 " + std::to_wstring(unit.id);
        for (int dataset = 0; isNewest && dataset < datasetCount; ++dataset) {
            http::ORLOHTTPPayloadDatasetVersion& version = datasetVersions.emplace_back();
            version.id = static_cast<int>(datasetVersions.size());
            version.dataSetId = "5c9e3f10-aa17-4b2d-b1f4-" + std::to_string(100000000000 + version.id);
            version.size = 1000;
            unit.datasetVersions.push_back(version.id);
        }
        standardCodes[unit.id] = {L"30-01.10.05"};
        return unit.id;
    }

    std::vector<http::ORLOHTTPPayloadArchivePackage> packages;
    std::vector<http::ORLOHTTPPayloadArchivePackageVersion> packageVersions;
    std::vector<http::ORLOHTTPPayloadArchiveUnitVersion> unitVersions;
    std::map<int, std::vector<std::wstring>> standardCodes;
    std::vector<http::ORLOHTTPPayloadDatasetVersion> datasetVersions;
};

bool isWhole(const ArchivePackages& tree)
{
    return std::all_of(tree.begin(), tree.end(), [](const std::shared_ptr<ArchivePackage>& package) {
        return package->GetArchiveUnits().size() == unitCount && package->GetArchiveUnits()[0]->GetTotalSize() == 1000 * datasetCount;
    });
}

void tellTimeOfAUnit(benchmark::State& state)
{
    state.counters["time of a unit"] = benchmark::Counter(static_cast<double>(state.range(0) * unitCount),
                                                          benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void joinArchivePackages(benchmark::State& state)
{
    const ArchiveAnswers answers(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<http::ORLOHTTPPayloadArchivePackage> packages = answers.packages;
        std::vector<http::ORLOHTTPPayloadArchiveUnitVersion> unitVersions = answers.unitVersions;
        state.ResumeTiming();
        ArchivePackages tree = toArchivePackages(std::move(packages));
        const NewestArchiveVersions newest = newestArchiveVersions(answers.packageVersions);
        const ArchiveResources resources = archiveResources(answers.packageVersions, newest);
        const ArchiveUnitVersions units = archiveUnitVersions(std::move(unitVersions), resources.resourceIds);
        addArchiveUnits(tree, newest, units, answers.standardCodes, answers.datasetVersions);
        if (tree.size() != answers.packages.size() || !isWhole(tree))
            return state.SkipWithError("not joined");
    }
    tellTimeOfAUnit(state);
}

void copyArchiveRecords(benchmark::State& state)
{
    const ArchiveAnswers answers(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(ArchiveAnswers(answers));
    tellTimeOfAUnit(state);
}

BENCHMARK(joinArchivePackages)
    ->Name("ArchivePackages/join")
    ->Arg(100)
    ->Arg(1000)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.2);
BENCHMARK(copyArchiveRecords)
    ->Name("ArchivePackages/copy")
    ->Arg(100)
    ->Arg(1000)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.2);

} // namespace
} // namespace orlo::bench
