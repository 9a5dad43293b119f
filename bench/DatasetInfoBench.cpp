#include "BenchServer.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <cpprest/http_client.h>
#include <cpprest/json.h>

#include <benchmark/benchmark.h>

namespace orlo::bench {
namespace {

constexpr const char* datasetId = "5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10";
constexpr const wchar_t* expectedName = L"建筑专业中心文件";

/// One small request through the face of the library.
void getDatasetInfo(benchmark::State& state)
{
    serverUrl();
    ICollaborationProjectManager* const manager = ICollaborationProjectManager::Get();
    for (auto _ : state) {
        ErrorCode error;
        const DatasetInfo info = manager->GetDatasetInfo(datasetId, error);
        if (!error.isClear() || info.name != expectedName)
            return state.SkipWithError("no dataset");
    }
}

std::string narrow(const web::json::value& object, const char* key)
{
    return object.has_string_field(key) ? object.at(key).as_string() : std::string();
}

std::wstring text(const web::json::value& object, const char* key)
{
    return object.has_string_field(key) ? utils::toWstring(object.at(key).as_string()) : std::wstring();
}

DatasetKind kind(const std::wstring& type)
{
    if (type == L"workunit" || type == L"standard" || type == L"zok")
        return DatasetKind::Standard;
    if (type == L"noneStandard" || type == L"cloudify" || type == L"dwg")
        return DatasetKind::NoneStandard;
    return DatasetKind::Other;
}

DatasetInfo infoFrom(const web::json::value& data)
{
    DatasetInfo info;
    info.id = narrow(data, "id");
    info.modelingDatasetId = narrow(data, "modelingDatasetId");
    info.name = text(data, "name");
    info.type = kind(text(data, "type"));
    info.description = text(data, "description");
    info.ownerId = text(data, "ownerId");
    info.specialtyId = text(data, "specialtyId");
    info.teamId = text(data, "teamId");
    info.projectId = text(data, "projectId");
    return info;
}

/// The same request as somebody would write it who has cpprestsdk alone.
void getDatasetInfoByHand(benchmark::State& state)
{
    const std::string url = serverUrl();
    for (auto _ : state) {
        web::http::client::http_client client{web::uri(url)};
        web::http::http_request request(web::http::methods::GET);
        request.set_request_uri(web::uri(std::string("/v2/dataSets/") + datasetId));
        request.headers().add("Authorization", authorization);
        const web::http::http_response response = client.request(request).get();
        const web::json::value body = response.extract_json().get();
        if (response.status_code() != 200 || !body.has_integer_field("code") || body.at("code").as_integer() != 10000)
            return state.SkipWithError("no dataset");
        const DatasetInfo info = infoFrom(body.at("data"));
        if (info.name != expectedName)
            return state.SkipWithError("another dataset");
    }
}

BENCHMARK(getDatasetInfo)
    ->Name("GetDatasetInfo/library")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.2);
BENCHMARK(getDatasetInfoByHand)
    ->Name("GetDatasetInfo/cpprestsdk")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.2);

} // namespace
} // namespace orlo::bench
