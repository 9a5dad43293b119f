#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class DatasetRoutes : public PlatformTest
{
protected:
    DatasetRoutes()
    {
        project("p1");
        platform.change(addFolder, {rootFolder("p1"), "plans", "OtherFiles", "", "f1"});
    }

    std::string record(const std::string& id, const std::string& more) const
    {
        return R"({"id":")" + id + R"(","nameSpace":"","schemaDefinition":"","codeVersion":0,"tipVersion":0,"projectId":"p1",
            "creationTime":"<time>",)" +
               more + "}";
    }
};

TEST_F(DatasetRoutes, ADatasetOfATeamLiesInTheTeamsFolder)
{
    const std::string team = teamOf("p1");
    const std::string linked = jsonText(demo().get("/projects/p1/teams").body, "data.0.linkedFolderId");
    platform.change(addSpecialty, {"p1", "ZOK", "结构", "s1"});
    const Reply reply = demo().post("/v2/dataSets", R"({"name":"模型","ownerId":"u1","specialtyId":"s1","folderId":"","teamId":")" + team +
                                                        R"(","type":"workunit"})");
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body,
                IsJson(R"({"code":10000,"message":"OK","data":)" +
                       record("<id>", R"("modelingDatasetId":"<id>","name":"模型","type":"workunit","specialtyId":"s1","ownerId":"u1",
                           "description":"","teamId":")" +
                                          team + R"(","folderId":")" + linked + R"(")") +
                       "}"));
}

TEST_F(DatasetRoutes, ADatasetWithAnIdAndAFolderKeepsBoth)
{
    const Reply reply =
        demo().post("/v2/dataSets", R"({"id":"d1","name":"a.dwg","ownerId":"","specialtyId":"","folderId":"f1","teamId":"","type":"dwg"})");
    const std::string expected = record("d1", R"("modelingDatasetId":"<id>","name":"a.dwg","type":"dwg","specialtyId":"",
        "ownerId":"demo-account","description":"","teamId":"","folderId":"f1")");
    EXPECT_THAT(reply.body, IsJson(R"({"code":10000,"message":"OK","data":)" + expected + "}"));
    EXPECT_THAT(demo().get("/v2/dataSets/d1").body, IsJson(R"({"code":10000,"message":"OK","data":)" + expected + "}"));
    EXPECT_THAT(demo().get("/dataset/byfolder?folderId=f1").body, IsJson("[" + expected + "]"));
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"id":"d1","name":"a","folderId":"f1"})").status, 409);
}

TEST_F(DatasetRoutes, ADatasetHasTheTypeOfItsFileWhateverThatIs)
{
    for (const std::string type : {"c", "图纸", ""}) {
        const Reply reply = demo().post("/v2/dataSets", R"({"name":"a.b.c","folderId":"f1","type":")" + type + R"("})");
        EXPECT_EQ(jsonText(demo().get("/v2/dataSets/" + jsonText(reply.body, "data.id")).body, "data.type"), type);
    }
}

TEST_F(DatasetRoutes, WrongDatasetsAreRefused)
{
    project("p2");
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"name":"","folderId":"f1"})").status, 400);
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"name":"a","folderId":"","teamId":""})").status, 400);
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"name":"a","folderId":"none"})").status, 404);
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"name":"a","teamId":"none"})").status, 404);
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"name":"a","folderId":"f1","specialtyId":"none"})").status, 400);
    EXPECT_EQ(demo().post("/v2/dataSets", R"({"name":"a","folderId":"f1","teamId":")" + teamOf("p2") + R"("})").status, 404);
    EXPECT_THAT(demo().get("/dataset/byfolder?folderId=f1").body, IsJson("[]"));
}

TEST_F(DatasetRoutes, DatasetsAreFoundByModelingId)
{
    platform.change(addDataset, {"a", "f1", {}, "zok", {}, "u1", "说明", "d1", "m1"});
    const std::string expected = record("d1", R"("modelingDatasetId":"m1","name":"a","type":"zok","specialtyId":"","ownerId":"u1",
        "description":"说明","teamId":"","folderId":"f1")");
    EXPECT_THAT(demo().post("/dataset/modelingid", R"(["m1"])").body, IsJson(R"({"code":10000,"message":"OK","data":[)" + expected + "]}"));
    EXPECT_THAT(demo().post("/dataset/modelingid", R"(["none"])").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    EXPECT_EQ(demo().post("/dataset/modelingid", R"({"id":"m1"})").status, 400);
    EXPECT_EQ(demo().post("/dataset/modelingid", "[7]").status, 400);
}

TEST_F(DatasetRoutes, UnknownDatasetsAndFoldersAreNotFound)
{
    EXPECT_THAT(demo().get("/v2/dataSets/none").body, IsJson(refusal(404)));
    EXPECT_EQ(demo().get("/dataset/byfolder?folderId=none").status, 404);
    EXPECT_EQ(demo().get("/dataset/byfolder").status, 400);
}

TEST_F(DatasetRoutes, APublishedVersionMakesADatasetCommitted)
{
    platform.change(addDataset, {"a", "f1", {}, "zok", {}, "u1", "", "d1", "m1"});
    const auto listed = [](const std::string& tip) {
        return R"([{"id":"d1","nameSpace":"","schemaDefinition":"","codeVersion":0,"tipVersion":)" + tip +
               R"(,"projectId":"p1","creationTime":"<time>","modelingDatasetId":"m1","name":"a","type":"zok","specialtyId":"",
               "ownerId":"u1","description":"","teamId":"","folderId":"f1"}])";
    };
    EXPECT_THAT(demo().get("/projects/p1/dataSets/byStatus?status=draft").body, IsJson(listed("0")));
    EXPECT_THAT(demo().get("/projects/p1/dataSets/byStatus?status=committed").body, IsJson("[]"));
    platform.change(addFile, "a", "bytes");
    demo().put("/dataset/d1/version?sourceFile=a", "{}");
    demo().post("/datasets/d1/1/markPublish", R"({"description":"x"})");
    EXPECT_THAT(demo().get("/projects/p1/dataSets/byStatus?status=draft").body, IsJson("[]"));
    EXPECT_THAT(demo().get("/projects/p1/dataSets/byStatus?status=committed").body, IsJson(listed("1")));
    EXPECT_EQ(demo().get("/projects/p1/dataSets/byStatus?status=Draft").status, 400);
    EXPECT_EQ(demo().get("/projects/none/dataSets/byStatus?status=draft").status, 404);
}

} // namespace
} // namespace orlo::platform::test
