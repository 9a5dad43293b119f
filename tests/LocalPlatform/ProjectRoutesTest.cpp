#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class ProjectRoutes : public PlatformTest
{};

TEST_F(ProjectRoutes, CreationAnswersTheRecordInAnEnvelope)
{
    const Reply reply =
        demo().post("/v3/projects", R"({"name":"塔楼","status":"Suspended","templateId":"t1","description":"两栋","id":"p1"})");
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body, IsJson(R"({"code":10000,"message":"OK","data":{"creationTime":"<time>","description":"两栋","id":"p1",
        "name":"塔楼","owner":"demo-account","status":"Suspended","size":0}})"));
}

TEST_F(ProjectRoutes, CreationWithoutAnIdMakesOne)
{
    const Reply reply = demo().post("/v3/projects", R"({"description":"","templateId":"","status":"Ongoing","name":"A"})");
    EXPECT_THAT(reply.body, IsJson(R"({"code":10000,"message":"OK","data":{"creationTime":"<time>","description":"","id":"<id>",
        "name":"A","owner":"demo-account","status":"Ongoing","size":0}})"));
}

TEST_F(ProjectRoutes, CreationWithATakenIdConflicts)
{
    project("p1");
    const Reply reply = demo().post("/v3/projects", R"({"name":"B","status":"Ongoing","id":"p1"})");
    EXPECT_EQ(reply.status, 409);
    EXPECT_THAT(reply.body, IsJson(refusal(409)));
}

TEST_F(ProjectRoutes, WrongCreationBodiesAreRefused)
{
    for (const char* body : {"", "[]", "{", "{\"name\":\"\xC3\x28\",\"status\":\"Ongoing\"}", R"({"status":"Ongoing"})",
                             R"({"name":"","status":"Ongoing"})", R"({"name":7,"status":"Ongoing"})", R"({"name":"A"})",
                             R"({"name":"A","status":"ongoing"})", R"({"name":"A","status":"Ongoing","id":5})"}) {
        const Reply reply = demo().post("/v3/projects", body);
        EXPECT_EQ(reply.status, 400) << body;
        EXPECT_THAT(reply.body, IsJson(refusal(400))) << body;
    }
    EXPECT_THAT(demo().get("/projects?scenario=OWNER").body, IsJson("[]"));
}

TEST_F(ProjectRoutes, ScenariosChooseWhichProjectsAreListed)
{
    other();
    platform.change(addProject, {"mine", "demo-account", "p1"});
    platform.change(addProject, {"shared", "second-account", "p2"});
    platform.change(addProject, {"foreign", "second-account", "p3"});
    platform.change(addProject, {"old", "demo-account", "p4", "Completed", "", "", 0, true});
    platform.change(grantPermission, "p2", "demo-account", "SpaceConfig", {"Read"});
    platform.change(setGridType, "p1", "TYPE_TWO");

    const std::string mine = R"({"creationTime":"<time>","description":"","id":"p1","name":"mine","owner":"demo-account",
        "status":"Ongoing","gridType":"TYPE_TWO","size":0})";
    const std::string shared = R"({"creationTime":"<time>","description":"","id":"p2","name":"shared","owner":"second-account",
        "status":"Ongoing","size":0})";
    const std::string old = R"({"creationTime":"<time>","description":"","id":"p4","name":"old","owner":"demo-account",
        "status":"Completed","size":0})";
    EXPECT_THAT(demo().get("/projects?scenario=DEFAULT").body, IsJson("[" + mine + "," + shared + "]"));
    EXPECT_THAT(demo().get("/projects?scenario=ARCHIVE").body, IsJson("[" + old + "]"));
    EXPECT_THAT(demo().get("/projects?scenario=OWNER").body, IsJson("[" + mine + "," + old + "]"));
    EXPECT_THAT(demo().get("/projects").body, IsJson("[" + mine + "," + shared + "]"));
    EXPECT_EQ(demo().get("/projects?scenario=ALL").status, 400);
}

TEST_F(ProjectRoutes, ProjectsAreListedByStatus)
{
    platform.change(addProject, {"a", "demo-account", "p1", "Suspended"});
    platform.change(addProject, {"b", "demo-account", "p2", "Ongoing"});
    EXPECT_THAT(demo().get("/projects/status?status=Suspended").body,
                IsJson(R"([{"creationTime":"<time>","description":"","id":"p1","name":"a","owner":"demo-account","status":"Suspended",
                    "size":0}])"));
    EXPECT_THAT(demo().get("/projects/status?status=Completed").body, IsJson("[]"));
    EXPECT_EQ(demo().get("/projects/status?status=Done").status, 400);
    EXPECT_EQ(demo().get("/projects/status").status, 400);
}

TEST_F(ProjectRoutes, OneProjectCarriesStandardPropertiesAndGridTypeWhereSet)
{
    project("p1");
    platform.change(setGridType, "p1", "TYPE_ONE");
    platform.change(setProjectSize, "p1", 5000000000);
    platform.change(setStandardProperties, "p1", R"([{"propertyId":"a","valueType":"Double","doubleValue":1.5}])");
    EXPECT_THAT(demo().get("/v2/projects/p1").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"creationTime":"<time>","description":"","id":"p1","name":"Tower",
                    "owner":"demo-account","status":"Ongoing","gridType":"TYPE_ONE","size":5000000000,
                    "standardProperties":[{"propertyId":"a","valueType":"Double","doubleValue":1.5}]}})"));
}

TEST_F(ProjectRoutes, AnUnknownProjectIsNotFound)
{
    const Reply reply = demo().get("/v2/projects/none");
    EXPECT_EQ(reply.status, 404);
    EXPECT_THAT(reply.body, IsJson(refusal(404)));
    EXPECT_EQ(demo().del("/v2/projects/none").status, 404);
}

TEST_F(ProjectRoutes, DeletionTakesEverythingBelowAlong)
{
    project("p1");
    const std::string root = rootFolder("p1");
    platform.change(addDataset, {"d", root, {}, "dwg", {}, {}, {}, "d1"});
    const Reply reply = demo().del("/v2/projects/p1");
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body, IsJson(R"({"code":10000,"message":"OK","data":null})"));
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 404);
    EXPECT_EQ(demo().get("/folders/" + root + "/subfolders").status, 404);
    EXPECT_EQ(demo().get("/v2/dataSets/d1").status, 404);
}

TEST_F(ProjectRoutes, OnlyItsOwnerDeletesAProject)
{
    project("p1");
    const Reply reply = other().del("/v2/projects/p1");
    EXPECT_EQ(reply.status, 403);
    EXPECT_THAT(reply.body, IsJson(refusal(403)));
    EXPECT_EQ(demo().get("/v2/projects/p1").status, 200);
}

TEST_F(ProjectRoutes, SampleProjectsAreAListOfTheirOwn)
{
    EXPECT_THAT(demo().get("/v2/sampleProjects").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    ProjectSeed sample;
    sample.name = "示例";
    sample.id = "s1";
    sample.sample = true;
    platform.change(addProject, sample);
    EXPECT_THAT(demo().get("/v2/sampleProjects").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"creationTime":"<time>","description":"","id":"s1","name":"示例",
                    "owner":"","status":"Ongoing","size":0}]})"));
    EXPECT_THAT(demo().get("/projects?scenario=DEFAULT").body, IsJson("[]"));
    EXPECT_EQ(demo().del("/v2/projects/s1").status, 403);
}

TEST_F(ProjectRoutes, AnAccountHasNoLimitsUntilItGetsAQuota)
{
    EXPECT_THAT(demo().get("/resource/limit").body, IsJson(R"({"code":10000,"message":"OK","data":null})"));
    platform.change(setQuota, "demo-account", 1, 2048);
    EXPECT_THAT(demo().get("/resource/limit").body, IsJson(R"({"code":10000,"message":"OK","data":{"projectNumber":1,"spaceSize":2048}})"));
    EXPECT_EQ(demo().post("/v3/projects", R"({"name":"A","status":"Ongoing"})").status, 200);
    EXPECT_EQ(demo().post("/v3/projects", R"({"name":"B","status":"Ongoing"})").status, 409);
    platform.change(setPersonal, "demo-account");
    EXPECT_EQ(demo().post("/v3/projects", R"({"name":"B","status":"Ongoing"})").status, 200);
}

TEST_F(ProjectRoutes, PermissionTypesAreThoseOfTheAccountInThePath)
{
    project("p1");
    platform.change(grantPermission, "p1", "demo-account", "GridConfig", {"Read"});
    platform.change(grantPermission, "p1", "demo-account", "SpaceConfig", {"Read", "Write"});
    platform.change(grantPermission, "p1", "second-account", "SpaceConfig", {"SoftWrite"});
    EXPECT_THAT(demo().get("/projects/p1/users/demo-account/permission").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"resource":"GridConfig","permissionTypes":["Read"]},
                    {"resource":"SpaceConfig","permissionTypes":["Read","Write"]}]})"));
    platform.change(grantPermission, "p1", "demo-account", "GridConfig", {});
    platform.change(grantPermission, "p1", "demo-account", "SpaceConfig", {});
    EXPECT_THAT(demo().get("/projects/p1/users/demo-account/permission").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    EXPECT_EQ(demo().get("/projects/none/users/demo-account/permission").status, 404);
}

TEST_F(ProjectRoutes, ANewProjectHasOneTeamWithItsFolder)
{
    project("p1");
    const std::string folders = demo().get("/folder/byproject?projectId=p1").body;
    const std::string linked = jsonText(folders, "5.id");
    EXPECT_EQ(jsonText(folders, "5.folderType"), "TeamRelated");
    EXPECT_EQ(jsonText(folders, "5.teamId"), teamOf("p1"));
    EXPECT_THAT(demo().get("/projects/p1/teams").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"id":"<id>","name":"默认团队","description":"","projectId":"p1",
                    "status":"Working","linkedFolderId":")" +
                       linked + R"("}]})"));
    EXPECT_EQ(demo().get("/projects/none/teams").status, 404);
}

} // namespace
} // namespace orlo::platform::test
