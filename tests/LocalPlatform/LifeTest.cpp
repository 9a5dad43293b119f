#include "PlatformFixture.h"
#include "RawExchange.h"
#include "support/ProcessProbe.h"
#include "support/TempFolder.h"
#include "support/Threads.h"

#include <set>

namespace orlo::platform::test {
namespace {

using orlo::test::descriptorCount;
using orlo::test::inThreads;
using orlo::test::TempFolder;
using orlo::test::threadCount;

TEST(Restart, WithTheSameFolderKeepsEverything)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    std::string address;
    std::string before;
    {
        LocalPlatform platform(Options{data, 0, true});
        platform.start();
        const Caller demo(platform.url(), "demo-token");
        platform.change(addProject, {"塔楼", "demo-account", "p1"});
        platform.change(addFont, {"p1", "F", "bytes", "ttf", "Project", "demo", "font1"});
        platform.change(setQuota, "demo-account", 5, 100);
        demo.post("/config/scope/Project/p1/type/SpaceConfig", R"({"a":1})");
        demo.post("/specialties", R"({"projectId":"p1","type":"ZOK","name":"n"})");
        before = demo.get("/v2/projects/p1").body + demo.get("/folder/byproject?projectId=p1").body + demo.get("/projects/p1/teams").body +
                 demo.get("/projects/p1/specialties").body;
        const std::string body = demo.get("/style-family/font/project/download/uri?fontId=font1&projectId=p1").body;
        address = jsonText(body, "data.fileUrlWithSAS").substr(platform.url().size());
    }
    LocalPlatform platform(Options{data, 0, false});
    platform.start();
    const Caller demo(platform.url(), "demo-token");
    EXPECT_EQ(demo.get("/v2/projects/p1").body + demo.get("/folder/byproject?projectId=p1").body + demo.get("/projects/p1/teams").body +
                  demo.get("/projects/p1/specialties").body,
              before);
    EXPECT_THAT(demo.get("/resource/limit").body, IsJson(R"({"code":10000,"message":"OK","data":{"projectNumber":5,"spaceSize":100}})"));
    EXPECT_THAT(demo.get("/config/scope/Project/p1/type/SpaceConfig?version=-1").body,
                IsJson(R"({"id":"<id>","scopeEntityId":"p1","version":1,"configValue":"{\"a\":1}"})"));
    EXPECT_EQ(Caller(platform.url(), {}).get(address).body, "bytes");
}

TEST(Restart, OfOnePlatformKeepsPortAndMemory)
{
    LocalPlatform platform(Options{{}, 0, true});
    platform.start();
    const std::string url = platform.url();
    platform.change(addProject, {"A", "demo-account", "p1"});
    platform.stop();
    EXPECT_EQ(Caller(url, "demo-token").get("/v2/projects/p1").error, httplib::Error::Connection);
    platform.start();
    EXPECT_EQ(platform.url(), url);
    EXPECT_EQ(Caller(url, "demo-token").get("/v2/projects/p1").status, 200);
}

TEST(Restart, AHundredTimesLeaksNeitherThreadsNorDescriptors)
{
    LocalPlatform platform(Options{{}, 0, true});
    platform.start();
    platform.stop();
    const std::size_t threads = threadCount();
    const std::size_t descriptors = descriptorCount();
    for (int i = 0; i < 100; ++i) {
        platform.start();
        EXPECT_EQ(Caller(platform.url(), "demo-token").get("/projects").status, 200);
        platform.stop();
    }
    EXPECT_EQ(threadCount(), threads);
    EXPECT_EQ(descriptorCount(), descriptors);
}

TEST(Stop, EndsConnectionsThatClientsKeepOpen)
{
    LocalPlatform platform(Options{{}, 0, true});
    platform.start();
    const auto idle = connectTo(platform.url());
    const auto halfway = connectTo(platform.url());
    EXPECT_TRUE(halfway->write("POST /v3/projects HTTP/1.1\r\nContent-Length: 100\r\n\r\n{"));
    EXPECT_EQ(Caller(platform.url(), "demo-token").get("/projects").status, 200);
    platform.stop();
    EXPECT_EQ(readAll(*idle).bytes, "");
    EXPECT_NE(readAll(*halfway).status(), 200);
    EXPECT_EQ(Caller(platform.url(), "demo-token").get("/projects").status, 0);
}

TEST(Start, OfASecondPlatformOnTheSamePortFails)
{
    LocalPlatform first;
    first.start();
    LocalPlatform second(Options{{}, std::stoi(first.url().substr(first.url().rfind(':') + 1)), false});
    EXPECT_THROW(second.start(), std::runtime_error);
    EXPECT_THROW(LocalPlatform(Options{{}, 70000, false}).start(), std::runtime_error);
}

TEST(Start, OfASecondPlatformOnTheSameFolderFails)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    const LocalPlatform first(Options{data, 0, false});
    EXPECT_THROW(LocalPlatform(Options{data, 0, false}), std::runtime_error);
}

TEST(Concurrency, IdleConnectionsDoNotStarveOthers)
{
    LocalPlatform platform(Options{{}, 0, true});
    platform.start();
    std::vector<std::unique_ptr<orlo::test::Connection>> idle;
    for (int i = 0; i < 100; ++i)
        idle.push_back(connectTo(platform.url()));
    EXPECT_EQ(Caller(platform.url(), "demo-token").get("/projects").status, 200);
}

TEST(Concurrency, ProjectsCreatedAtOnceAllGetIdsOfTheirOwn)
{
    LocalPlatform platform(Options{{}, 0, true});
    platform.start();
    std::mutex mutex;
    std::set<std::string> ids;
    inThreads(8, [&] {
        for (int i = 0; i < 10; ++i) {
            const Caller demo(platform.url(), "demo-token");
            const std::string id = jsonText(demo.post("/v3/projects", R"({"name":"A","status":"Ongoing"})").body, "data.id");
            const std::lock_guard lock(mutex);
            ids.insert(id);
        }
    });
    EXPECT_EQ(ids.size(), 80u);
}

TEST(Concurrency, OfTwoProjectsWithOneIdExactlyOneIsMade)
{
    LocalPlatform platform(Options{{}, 0, true});
    platform.start();
    std::atomic<int> made{0};
    std::atomic<int> conflicts{0};
    inThreads(8, [&] {
        const Caller demo(platform.url(), "demo-token");
        const int status = demo.post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status;
        made += status == 200;
        conflicts += status == 409;
    });
    EXPECT_EQ(made, 1);
    EXPECT_EQ(conflicts, 7);
}

} // namespace
} // namespace orlo::platform::test
