#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class FolderRoutes : public PlatformTest
{
protected:
    FolderRoutes() { project("p1"); }
};

TEST_F(FolderRoutes, ANewProjectHasTheDefaultFoldersBelowItsRoot)
{
    const std::string root = rootFolder("p1");
    const std::string team = teamOf("p1");
    const auto child = [&](const std::string& name, const std::string& type, const std::string& teamId) {
        return R"({"id":"<id>","projectId":"p1","name":")" + name + R"(","folderType":")" + type + R"(","parentId":")" + root +
               R"(","teamId":")" + teamId + R"("})";
    };
    EXPECT_THAT(demo().get("/folder/byproject?projectId=p1").body,
                IsJson(R"([{"id":")" + root + R"(","name":"Tower","folderType":"Root","parentId":"","projectId":"p1","teamId":""},)" +
                       child("Process", "Process", "") + "," + child("Published", "Published", "") + "," +
                       child("ProjectShare", "ProjectShare", "") + "," + child("OtherFiles", "OtherFiles", "") + "," +
                       child("默认团队", "TeamRelated", team) + "]"));
}

TEST_F(FolderRoutes, TheRootFolderComesInAnEnvelope)
{
    EXPECT_THAT(demo().get("/projects/p1/rootfolder").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"<id>","name":"Tower","folderType":"Root","parentId":"",
                    "projectId":"p1","teamId":""}})"));
    EXPECT_EQ(demo().get("/projects/none/rootfolder").status, 404);
}

TEST_F(FolderRoutes, SubFoldersAreListedOneLevelDeepOrAllTheWay)
{
    platform.change(addFolder, {rootFolder("p1"), "一", "OtherFiles", "", "f1"});
    platform.change(addFolder, {"f1", "二", "Process", "", "f2"});
    platform.change(addFolder, {"f2", "三", "Published", "", "f3"});
    const std::string second = R"({"id":"f2","name":"二","folderType":"Process","parentId":"f1","projectId":"p1","teamId":""})";
    const std::string third = R"({"id":"f3","name":"三","folderType":"Published","parentId":"f2","projectId":"p1","teamId":""})";
    EXPECT_THAT(demo().get("/folders/f1/subfolders?recursive=false").body, IsJson("[" + second + "]"));
    EXPECT_THAT(demo().get("/folders/f1/subfolders?recursive=true").body, IsJson("[" + second + "," + third + "]"));
    EXPECT_THAT(demo().get("/folders/f3/subfolders?recursive=true").body, IsJson("[]"));
    EXPECT_EQ(demo().get("/folders/f1/subfolders?recursive=yes").status, 400);
    EXPECT_EQ(demo().get("/folders/none/subfolders?recursive=true").status, 404);
}

TEST_F(FolderRoutes, FoldersNeedAKnownProject)
{
    EXPECT_EQ(demo().get("/folder/byproject?projectId=none").status, 404);
    EXPECT_EQ(demo().get("/folder/byproject?projectId=").status, 400);
    EXPECT_EQ(demo().get("/folder/byproject").status, 400);
}

TEST_F(FolderRoutes, ADatasetTellsItsProject)
{
    platform.change(addFolder, {rootFolder("p1"), "一", "OtherFiles", "", "f1"});
    platform.change(addDataset, {"d", "f1", {}, "dwg", {}, {}, {}, "d1"});
    EXPECT_THAT(demo().get("/folder/hasdataset?datasetId=d1").body, IsJson(R"({"projectId":"p1","folderId":"f1"})"));
    EXPECT_EQ(demo().get("/folder/hasdataset?datasetId=none").status, 404);
}

TEST_F(FolderRoutes, SpecialtiesAreCreatedListedAndReadById)
{
    EXPECT_THAT(demo().get("/projects/p1/specialties").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    const Reply created = demo().post("/specialties", R"({"projectId":"p1","type":"ZUTA","name":"给排水"})");
    EXPECT_EQ(created.status, 200);
    const std::string record = R"({"id":"<id>","name":"给排水","projectId":"p1","description":"","type":"ZUTA"})";
    EXPECT_THAT(created.body, IsJson(R"({"code":10000,"message":"OK","data":)" + record + "}"));
    EXPECT_THAT(demo().get("/projects/p1/specialties").body, IsJson(R"({"code":10000,"message":"OK","data":[)" + record + "]}"));
    const std::string id = jsonText(created.body, "data.id");
    EXPECT_THAT(demo().get("/specialties/" + id).body, IsJson(R"({"code":10000,"message":"OK","data":)" + record + "}"));
}

TEST_F(FolderRoutes, WrongSpecialtiesAreRefused)
{
    EXPECT_EQ(demo().post("/specialties", R"({"projectId":"p1","type":"zuta","name":"a"})").status, 400);
    EXPECT_EQ(demo().post("/specialties", R"({"projectId":"","type":"ZUTA","name":"a"})").status, 400);
    EXPECT_EQ(demo().post("/specialties", R"({"projectId":"none","type":"ZUTA","name":"a"})").status, 404);
    EXPECT_EQ(other().post("/specialties", R"({"projectId":"p1","type":"ZUTA","name":"a"})").status, 403);
    EXPECT_EQ(demo().get("/specialties/none").status, 404);
    EXPECT_EQ(demo().get("/projects/none/specialties").status, 404);
}

} // namespace
} // namespace orlo::platform::test
