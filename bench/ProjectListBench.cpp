#include "BenchServer.h"

#include <BaseCommon/ErrorCode.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <cpprest/http_client.h>
#include <cpprest/json.h>

#include <benchmark/benchmark.h>

namespace orlo::bench {
namespace {

/// A long list through the face of the library: request, parsing, and an object with wide texts for each project.
void getAllProjects(benchmark::State& state)
{
    serverUrl();
    ICollaborationProjectManager* const manager = ICollaborationProjectManager::Get();
    for (auto _ : state) {
        ErrorCode error;
        const auto projects = manager->GetAllProjects(error);
        if (!error.isClear() || projects.size() != projectCount)
            return state.SkipWithError("no projects");
    }
}

/// The same answer brought to JSON by cpprestsdk, with no object made of it.
void extractJson(benchmark::State& state)
{
    const std::string url = serverUrl();
    for (auto _ : state) {
        web::http::client::http_client client{web::uri(url)};
        web::http::http_request request(web::http::methods::GET);
        request.set_request_uri(web::uri("/projects?scenario=DEFAULT"));
        request.headers().add("Authorization", authorization);
        const web::json::value body = client.request(request).get().extract_json().get();
        if (body.size() != projectCount)
            return state.SkipWithError("no projects");
    }
}

BENCHMARK(getAllProjects)
    ->Name("GetAllProjects/library")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.3);
BENCHMARK(extractJson)
    ->Name("GetAllProjects/cpprestsdk")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond)
    ->MinTime(0.3);

} // namespace
} // namespace orlo::bench
