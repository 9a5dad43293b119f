// A list of 5,000 issues with three datasets each, read into issues; and the same answer brought to JSON alone.

#include "BenchServer.h"

#include <BaseCommon/ErrorCode.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <cpprest/http_client.h>
#include <cpprest/json.h>

#include <benchmark/benchmark.h>

namespace orlo::bench {
namespace {

void listIssues(benchmark::State& state)
{
    serverUrl();
    for (auto _ : state) {
        ErrorCode error;
        IIssueManager::Issues issues;
        if (!IIssueManager::Get()->GetIssueListByDatasetId("dataset-1", issues, error) || issues.size() != issueCount)
            return state.SkipWithError("no issues");
    }
}

void listIssuesByHand(benchmark::State& state)
{
    const std::string url = serverUrl();
    for (auto _ : state) {
        web::http::client::http_client client{web::uri(url)};
        web::http::http_request request(web::http::methods::POST);
        request.set_request_uri(web::uri("/issue/detail/bydatasetids?page=1"));
        request.headers().add("Authorization", authorization);
        request.set_body(web::json::value::parse(R"(["dataset-1"])"));
        const web::json::value body = client.request(request).get().extract_json().get();
        if (body.at("data").size() != issueCount)
            return state.SkipWithError("no issues");
    }
}

BENCHMARK(listIssues)->Name("GetIssueList/library")->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMicrosecond)->MinTime(0.2);
BENCHMARK(listIssuesByHand)
    ->Name("GetIssueList/cpprestsdk")
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMicrosecond)
    ->MinTime(0.2);

} // namespace
} // namespace orlo::bench
