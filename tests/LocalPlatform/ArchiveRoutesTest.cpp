#include "PlatformFixture.h"
#include "support/TempFolder.h"

#include <stdexcept>

namespace orlo::platform::test {
namespace {

constexpr const char* archivesOfP1 = "/archive-assignment/project/p1/packages";
constexpr const char* archiveVersions = "/v2/search/archive-packages/versions";
constexpr const char* unitVersions = "/search/integrate-packages/versions";
constexpr const char* unitCodes = "/integrate-packages/versions/standard/code";

std::string archiveAnswer(const std::string& data)
{
    return R"({"code":10000,"msg":"OK","data":)" + data + "}";
}

/// A version of the dataset without a file.   Returns: its id.
int addDatasetVersion(const Caller& caller, const std::string& datasetId, int number)
{
    const std::string target = "/datasets/" + datasetId + "/versions/" + std::to_string(number) + "/create";
    const std::string body = caller.post(target, R"({"status":"WIP"})").body;
    const std::size_t id = body.find("\"id\":");
    EXPECT_NE(id, std::string::npos) << body;
    return std::stoi(body.substr(id + 5));
}

class ArchiveRoutes : public PlatformTest
{
protected:
    ArchiveRoutes()
    {
        project("p1");
        project("p2");
        platform.change(addDataset, {"塔楼", rootFolder("p1"), {}, "zok", {}, "u1", "", "d1", "m1"});
        platform.change(addDataset, {"别处", rootFolder("p2"), {}, "zok", {}, "u1", "", "d2", "m2"});
        first = addDatasetVersion(demo(), "d1", 1);
        second = addDatasetVersion(demo(), "d1", 2);
        elsewhere = addDatasetVersion(demo(), "d2", 1);
    }

    std::string package(const std::string& id, const std::string& projectId = "p1")
    {
        return platform.change(addArchivePackage, {projectId, "总图", id, "words", "r", "收件", "s", "发件"});
    }
    int unit(const std::string& packageId, const std::vector<int>& versions = {}, const std::vector<std::string>& codes = {},
             const std::string& projectId = "p1")
    {
        return platform.change(addArchiveUnit, {projectId, "unit of " + packageId, versions, codes, packageId});
    }

    int first = 0;
    int second = 0;
    int elsewhere = 0;
};

TEST_F(ArchiveRoutes, PackagesOfAProjectAreListedWithTheNumberOfTheirNewestVersion)
{
    EXPECT_THAT(demo().get(archivesOfP1).body, IsJson(archiveAnswer("[]")));
    package("a1");
    package("other", "p2");
    platform.change(addArchivePackage, {"p1", "second", "a2", {}, {}, {}, {}, {}, false});
    EXPECT_EQ(platform.change(addArchiveVersion, "a1", {}), 1);
    EXPECT_EQ(platform.change(addArchiveVersion, "a1", {}), 2);
    EXPECT_THAT(demo().get(archivesOfP1).body,
                IsJson(archiveAnswer(R"([{"packageId":"a1","packageName":"总图","desc":"words","version":2,"receiver":"r",
                    "receiverName":"收件","projectId":"p1","createTime":"<time>","sharer":"s","sharerName":"发件","status":"enable"},
                    {"packageId":"a2","packageName":"second","desc":"","version":0,"receiver":"","receiverName":"","projectId":"p1",
                    "createTime":"<time>","sharer":"","sharerName":"","status":"disable"}])")));
    EXPECT_EQ(demo().get("/archive-assignment/project/none/packages").status, 404);
}

TEST_F(ArchiveRoutes, AllVersionsOfThePackagesThatAreAskedForAreTold)
{
    package("a1");
    package("a2");
    package("a3");
    const int tower = unit("i1");
    const int podium = unit("i2");
    platform.change(addArchiveVersion, "a1", {tower});
    platform.change(addArchiveVersion, "a3", {tower});
    platform.change(addArchiveVersion, "a2", {});
    platform.change(addArchiveVersion, "a1", {podium, tower, podium});
    const auto content = [](int unitVersion, const std::string& id) {
        return R"({"resourceId":")" + std::to_string(unitVersion) + R"(","integratePackageId":")" + id + R"(","type":"IntegratePackage"})";
    };
    const auto version = [](int number, const std::string& id, const std::string& contents) {
        return R"({"id":"<number>","version":)" + std::to_string(number) + R"(,"ownerId":"s","ownerName":"发件","packageId":")" + id +
               R"(","content":[)" + contents + "]}";
    };
    const std::string all = version(1, "a1", content(tower, "i1")) + "," + version(1, "a2", "") + "," +
                            version(2, "a1", content(podium, "i2") + "," + content(tower, "i1") + "," + content(podium, "i2"));
    EXPECT_THAT(demo().post(archiveVersions, R"(["a2","none","a1","a1",""])").body, IsJson(archiveAnswer("[" + all + "]")));
    EXPECT_THAT(demo().post(archiveVersions, "[]").body, IsJson(archiveAnswer("[]")));
}

TEST_F(ArchiveRoutes, AllVersionsOfTheUnitsThatAreAskedForAreTold)
{
    const int old = unit("i1", {first});
    const int other = unit("i2");
    const int young = unit("i1", {second, first});
    const auto version = [](int id, int number, const std::string& packageId, const std::string& datasets) {
        return R"({"id":)" + std::to_string(id) + R"(,"version":)" + std::to_string(number) +
               R"(,"integrateStatus":"Success","packageId":")" + packageId + R"(","integratePackageName":"unit of )" + packageId +
               R"(","creationTime":"<time>","datasetVersions":[)" + datasets + "]}";
    };
    EXPECT_THAT(demo().post(unitVersions, R"(["i2","i1","none"])").body,
                IsJson(archiveAnswer("[" + version(old, 1, "i1", std::to_string(first)) + "," + version(other, 1, "i2", "") + "," +
                                     version(young, 2, "i1", std::to_string(second) + "," + std::to_string(first)) + "]")));
    EXPECT_THAT(demo().post(unitVersions, "[]").body, IsJson(archiveAnswer("[]")));
}

TEST_F(ArchiveRoutes, StandardCodesAreToldByTheVersionsOfUnits)
{
    const int coded = unit("i1", {}, {"30-01.10", "标准"});
    const int bare = unit("i2");
    unit("i3", {}, {"not asked for"});
    EXPECT_THAT(demo().post(unitCodes, "[" + std::to_string(bare) + ",99," + std::to_string(coded) + "]").body,
                IsJson(archiveAnswer(R"({"vos":[{"versionId":)" + std::to_string(coded) +
                                     R"(,"scs":[{"sk":"standardCode","sv":"30-01.10"},{"sk":"standardCode","sv":"标准"}]},{"versionId":)" +
                                     std::to_string(bare) + R"(,"scs":[]}]})")));
    EXPECT_THAT(demo().post(unitCodes, "[]").body, IsJson(archiveAnswer(R"({"vos":[]})")));
}

TEST_F(ArchiveRoutes, QuestionsAreArraysAndNeedAToken)
{
    for (const char* target : {archiveVersions, unitVersions, unitCodes}) {
        for (const char* body : {"", "{}", "null", "[null]", "[[]]", "[1,\"a\"]", "["})
            EXPECT_EQ(demo().post(target, body).status, 400) << target << ' ' << body;
        EXPECT_EQ(nobody().post(target, "[]").status, 401) << target;
        EXPECT_EQ(other().post(target, "[]").status, 200) << "reading is free: " << target;
    }
    EXPECT_EQ(demo().post(archiveVersions, "[1]").status, 400);
    EXPECT_EQ(demo().post(unitCodes, R"(["1"])").status, 400);
    EXPECT_EQ(nobody().get(archivesOfP1).status, 401);
    EXPECT_EQ(other().get(archivesOfP1).status, 200);
}

TEST_F(ArchiveRoutes, WhatIsNamedMustBeInTheProject)
{
    package("a1");
    const int there = unit("i1");
    const int foreign = unit("i2", {}, {}, "p2");
    EXPECT_THROW(platform.change(addArchiveVersion, "a1", {there, foreign}), std::runtime_error);
    EXPECT_THROW(platform.change(addArchiveVersion, "a1", {there, 99}), std::runtime_error);
    EXPECT_THROW(platform.change(addArchiveVersion, "none", {}), std::runtime_error);
    EXPECT_THROW(unit("i1", {elsewhere}), std::runtime_error);
    EXPECT_THROW(unit("i1", {99}), std::runtime_error);
    EXPECT_THROW(unit("i2"), std::runtime_error) << "the integrate package is another project's";
    EXPECT_THROW(package("a1"), std::runtime_error) << "the id is taken";
    EXPECT_THROW(package("a9", "none"), std::runtime_error);
    EXPECT_EQ(platform.change(addArchiveVersion, "a1", {there}), 1) << "a refused version isn't counted";
    EXPECT_EQ(unit("i1"), foreign + 1);
}

TEST_F(ArchiveRoutes, ControlCallsMakeThemToo)
{
    const Caller control = nobody();
    EXPECT_THAT(control
                    .post("/_control/archives", R"({"projectId":"p1","name":"总图","id":"a1","description":"d","receiver":"r",
                    "receiverName":"rn","sharer":"s","sharerName":"sn","enabled":false})")
                    .body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"a1"}})"));
    const Reply made = control.post("/_control/archiveUnits", R"({"projectId":"p1","name":"结构","packageId":"i1","standardCodes":["c"],
                    "status":"Failed","datasetVersions":[)" + std::to_string(first) +
                                                                  "]}");
    EXPECT_EQ(made.status, 200) << made.body;
    const std::string id = jsonText(made.body, "data.id");
    EXPECT_THAT(control.post("/_control/archiveVersions", R"({"packageId":"a1","units":[)" + id + "]}").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"version":1}})"));
    EXPECT_THAT(demo().get(archivesOfP1).body,
                IsJson(archiveAnswer(R"([{"packageId":"a1","packageName":"总图","desc":"d","version":1,"receiver":"r","receiverName":"rn",
                    "projectId":"p1","createTime":"<time>","sharer":"s","sharerName":"sn","status":"disable"}])")));
    EXPECT_THAT(demo().post(unitVersions, R"(["i1"])").body,
                IsJson(archiveAnswer(R"([{"id":)" + id + R"(,"version":1,"integrateStatus":"Failed","packageId":"i1",
                    "integratePackageName":"结构","creationTime":"<time>","datasetVersions":[)" +
                                     std::to_string(first) + "]}]")));
    EXPECT_THAT(demo().post(unitCodes, "[" + id + "]").body,
                IsJson(archiveAnswer(R"({"vos":[{"versionId":)" + id + R"(,"scs":[{"sk":"standardCode","sv":"c"}]}]})")));
    for (const char* body : {R"({"projectId":"p1"})", R"({"name":"n"})", R"({"projectId":"p1","name":""})", "[]"}) {
        EXPECT_EQ(control.post("/_control/archives", body).status, 400) << body;
        EXPECT_EQ(control.post("/_control/archiveUnits", body).status, 400) << body;
    }
    EXPECT_EQ(control.post("/_control/archiveUnits", R"({"projectId":"p1","name":"n","datasetVersions":["1"]})").status, 400);
    EXPECT_EQ(control.post("/_control/archiveVersions", R"({"packageId":"a1","units":[4294967297]})").status, 400);
    EXPECT_EQ(control.post("/_control/archiveVersions", R"({"packageId":"none"})").status, 404);
}

TEST_F(ArchiveRoutes, TheyGoWithTheirProjectAndDatasetsWithTheirs)
{
    package("a1");
    const int there = unit("i1", {first}, {"c"});
    platform.change(addArchiveVersion, "a1", {there});
    ASSERT_EQ(demo().del("/v2/projects/p1").status, 200);
    project("p1");
    EXPECT_THAT(demo().get(archivesOfP1).body, IsJson(archiveAnswer("[]")));
    EXPECT_THAT(demo().post(archiveVersions, R"(["a1"])").body, IsJson(archiveAnswer("[]")));
    EXPECT_THAT(demo().post(unitVersions, R"(["i1"])").body, IsJson(archiveAnswer("[]")));
    EXPECT_THAT(demo().post(unitCodes, "[" + std::to_string(there) + "]").body, IsJson(archiveAnswer(R"({"vos":[]})")));
    EXPECT_EQ(unit("i1"), there + 1) << "an id is never used again";
}

TEST(ArchiveRoutesRestart, KeepsPackagesAndTheirUnits)
{
    const orlo::test::TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    const auto answers = [](const Caller& demo) {
        return std::vector<std::string>{demo.get(archivesOfP1).body, demo.post(archiveVersions, R"(["a1"])").body,
                                        demo.post(unitVersions, R"(["i1"])").body, demo.post(unitCodes, "[1]").body};
    };
    std::vector<std::string> before;
    {
        LocalPlatform platform(Options{data, 0, true});
        platform.start();
        platform.change(addProject, {"塔楼", "demo-account", "p1"});
        platform.change(addArchivePackage, {"p1", "总图", "a1"});
        platform.change(addArchiveVersion, "a1", {platform.change(addArchiveUnit, {"p1", "结构", {}, {"30-01"}, "i1"})});
        before = answers({platform.url(), "demo-token"});
    }
    EXPECT_NE(before[1].find(R"("integratePackageId":"i1")"), std::string::npos) << before[1];
    EXPECT_NE(before[3].find("30-01"), std::string::npos) << before[3];
    LocalPlatform platform(Options{data, 0, false});
    platform.start();
    EXPECT_EQ(answers({platform.url(), "demo-token"}), before);
}

} // namespace
} // namespace orlo::platform::test
