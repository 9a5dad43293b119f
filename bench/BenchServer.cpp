#include "BenchServer.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>

#include <httplib.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

namespace orlo::bench {

namespace {

constexpr const char* json = "application/json;charset=UTF-8";

constexpr const char* dataset = R"({"code":10000,"message":"success","data":{"id":"5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10",)"
                                R"("modelingDatasetId":"c7a8f0d2-14a0-4f0a-8d4e-3f9f8a2b7c61","name":"建筑专业中心文件","type":"workunit",)"
                                R"("description":"Level 1 to 12, east tower","ownerId":"user-100023","specialtyId":"specialty-7",)"
                                R"("teamId":"a1d3c7f0-5b1e-4c26-b0f8-8c1b6a7d9e20","projectId":"0b9f6e14-2c3d-4e5f-8a7b-6c5d4e3f2a1b"}})";

/// One project of the list, about 390 bytes.
std::string project(int number)
{
    char text[1024];
    const int size = std::snprintf(
        text, sizeof text,
        R"({"id":"0b9f6e14-2c3d-4e5f-8a7b-%012d","name":"%s %d","description":"Mixed use, two towers and a podium, stage %d. )"
        R"(Revised after the review of the structural scheme.","creationTime":"2024-03-%02dT09:30:00.000+08:00",)"
        R"("modificationTime":"2024-11-%02dT17:05:12.345+08:00","owner":"user-%06d","status":"ONGOING","gridType":"AXISGRID",)"
        R"("size":%lld,"tenantId":"tenant-42"})",
        number, number % 3 == 0 ? "滨江商务区一期工程" : "Riverside Business District", number, number % 7, number % 28 + 1,
        number % 28 + 1, number % 500, 1000000007LL * number);
    return {text, static_cast<std::size_t>(size)};
}

std::string projects()
{
    std::string list = "[";
    for (int i = 0; i < projectCount; ++i)
        list += (i > 0 ? "," : "") + project(i);
    return list + "]";
}

/// One issue of the list with its three datasets, about 1 KB.
std::string issue(std::size_t number)
{
    const std::string id = std::to_string(number);
    std::string datasets;
    for (const std::string ordinal : {"1", "2", "3"})
        datasets += (datasets.empty() ? "" : ",") + (R"({"isCurrent":)" + std::string(ordinal == "1" ? "1" : "0")) +
                    R"(,"datasetId":"5f0c2a6e-7d5b-4b8e-9a55-)" + id + ordinal +
                    R"(","datasetName":"建筑专业中心文件","teamId":"team-1","teamName":"结构组","displayVersion":"V3","version":3,)" +
                    R"("deleted":false})";
    return R"({"id":)" + id + R"(,"teamId":"team-1","teamName":"结构组","userId":"user-100023","userName":"王","title":"风管穿梁 )" + id +
           R"(","description":"Level 2, corridor: duct against beam. Revised after the review of the structural scheme.","file":"",)" +
           R"("camera":"eye 12.0 -4.5 5.2 target 10.0 0.0 3.6","markCoordinate":"","creationTime":"2024-03-05T09:30:00.000Z",)" +
           R"("updateTime":"2024-11-12T17:05:12.345Z","elementId":"beam-17","elementName":"梁 17","memo":"Open","type":"CollisionDetection",)" +
           R"("issueDatasets":[)" + datasets + "]}";
}

std::string issues()
{
    std::string list;
    for (std::size_t i = 0; i < issueCount; ++i)
        list += (list.empty() ? "" : ",") + issue(i);
    return R"({"code":0,"msg":"OK","data":[)" + list + "]}";
}

/// Answers from memory, without a copy of its own.
httplib::Server::Handler answerWith(std::string body)
{
    return [body = std::make_shared<const std::string>(std::move(body))](const httplib::Request& request, httplib::Response& response) {
        if (request.get_header_value("Authorization") != authorization) {
            response.status = 401;
            return;
        }
        response.set_content_provider(body->size(), json, [body](size_t offset, size_t length, httplib::DataSink& sink) {
            return sink.write(body->data() + offset, length);
        });
    };
}

std::string start()
{
    auto& server = *new httplib::Server;
    server.new_task_queue = [] { return new httplib::ThreadPool(4); };
    server.set_tcp_nodelay(true);
    server.Get(R"(/v2/dataSets/[^/]+)", answerWith(dataset));
    server.Get("/projects", answerWith(projects()));
    server.Post(R"(/v3/dataset/[^/]+/xmonitor/apply)",
                answerWith(R"({"code":10000,"msg":"OK","data":{"token":"7f0c4a52-1c6a-4b8e-9d3e-6d8d4b0f6a11","monitor":2}})"));
    server.Put(R"(/dataset/[^/]+/monitor/ack)", answerWith(R"({"code":10000,"msg":"OK","data":null})"));
    server.Put(R"(/dataset/monitor/[^/]+/release)", answerWith(R"({"code":10000,"msg":"OK","data":null})"));
    server.Post("/issue/detail/bydatasetids", answerWith(issues()));
    const int port = server.bind_to_any_port("127.0.0.1");
    if (port <= 0)
        std::abort();
    std::thread([&server] { server.listen_after_bind(); }).detach();
    return "http://127.0.0.1:" + std::to_string(port);
}

std::string startAndSetUp()
{
    const std::string url = start();
    OrloConfig config;
    config.serviceUrls[L"project"] = utils::toWstring(url);
    OrloConfigManager::Configure(config);
    UserSession::SignIn({L"user-1", L"account-1", L"bench-token-1"});
    return url;
}

} // namespace

const std::string& serverUrl()
{
    static const std::string url = startAndSetUp();
    return url;
}

} // namespace orlo::bench
