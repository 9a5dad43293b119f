// What the token file adds to taking the right to write a dataset and giving it back, with one entry in it and with ten thousand.

#include "BenchServer.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/NetworkProject/Permission/DatasetPermissionWeb.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <benchmark/benchmark.h>
#include <filesystem>

namespace orlo::bench {
namespace {

constexpr const char* datasetId = "5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10";

/// An empty local root in memory, so that no disk takes part; the usual place is back at the end.
class Root
{
public:
    Root() : m_path("/dev/shm/orlo-permission-bench")
    {
        std::filesystem::remove_all(m_path);
        utils::setLocalRoot(utils::toWstring(m_path.string()));
    }
    ~Root()
    {
        utils::setLocalRoot({});
        std::filesystem::remove_all(m_path);
    }

private:
    std::filesystem::path m_path;
};

/// A token file with so many entries of other datasets.
bool fill(long entries)
{
    std::string text = R"({"version":1,"tokens":[)";
    for (long i = 0; i < entries; ++i) {
        const std::string number = std::to_string(1000000 + i);
        text += (i > 0 ? "," : "") + (R"({"user":"user-100023","dataset":"0b9f6e14-2c3d-4e5f-8a7b-00000)" + number) +
                (R"(","token":"7f0c4a52-1c6a-4b8e-9d3e-00000)" + number) + R"("})";
    }
    const std::wstring folder = utils::PermissionFileHelper::TokenFolder();
    return utils::createDirectoryRecursively(folder) &&
           utils::writeFileAtomically(FilePath::Combine(folder, L"DatasetTokens.json"), text + "]}", utils::FileAccess::ownerOnly);
}

void takeAndRelease(benchmark::State& state)
{
    serverUrl();
    const Root root;
    if (!fill(static_cast<long>(state.range(0))))
        return state.SkipWithError("no token file");
    for (auto _ : state) {
        ErrorCode error;
        std::string result;
        if (IDatasetPermission::GetDatasetPermission(datasetId, result, error) != EDatasetPermission::READ_WRITE ||
            !IDatasetPermission::ReleaseDatasetPermission(datasetId, result, error, false))
            return state.SkipWithError(result.c_str());
    }
}

/// The same three requests, and no file.
void requestsAlone(benchmark::State& state)
{
    serverUrl();
    for (auto _ : state) {
        ErrorCode error;
        DatasetPermissionFailure failure;
        std::string token;
        int monitor = 0;
        if (!OrloWebService::ApplyForWriteDataset(error, failure, token, monitor, datasetId) ||
            !OrloWebService::ObtainPermissionTokenAck(error, failure, datasetId, token) ||
            !OrloWebService::ReleaseDatasetPermissionMonitor(error, failure, token))
            return state.SkipWithError("refused");
    }
}

BENCHMARK(takeAndRelease)->Name("Permission/library")->Arg(1)->Arg(10000)->UseRealTime()->Unit(benchmark::kMicrosecond)->MinTime(0.2);
BENCHMARK(requestsAlone)->Name("Permission/requests")->UseRealTime()->Unit(benchmark::kMicrosecond)->MinTime(0.2);

} // namespace
} // namespace orlo::bench
