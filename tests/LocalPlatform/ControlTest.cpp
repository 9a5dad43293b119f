#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class Control : public PlatformTest
{
protected:
    /// Control calls need no token.
    Reply control(const std::string& name, const std::string& body) const { return nobody().post("/_control/" + name, body); }
};

const std::string acknowledged = R"({"code":10000,"message":"OK","data":null})";

TEST_F(Control, RegistersUsers)
{
    EXPECT_THAT(control("users", R"({"userId":"u","accountId":"a","accessToken":"t"})").body, IsJson(acknowledged));
    EXPECT_EQ(Caller(platform.url(), "t").get("/projects").status, 200);
    EXPECT_EQ(control("users", R"({"userId":"u","accountId":"","accessToken":"t2"})").status, 400);
}

TEST_F(Control, RevokesTokens)
{
    EXPECT_THAT(control("tokens", R"({"accessToken":"demo-token","revoked":true})").body, IsJson(acknowledged));
    const Reply refused = demo().get("/projects");
    EXPECT_EQ(refused.status, 401);
    EXPECT_THAT(refused.body, IsJson(R"({"code":40100,"message":"the access token was revoked","data":null})"));
    EXPECT_EQ(control("tokens", R"({"accessToken":"demo-token","revoked":false})").status, 200);
    EXPECT_EQ(demo().get("/projects").status, 200);
}

TEST_F(Control, ExpiresTokensByThePlatformsClock)
{
    EXPECT_THAT(control("tokens", R"({"accessToken":"demo-token","expiresIn":3600})").body, IsJson(acknowledged));
    EXPECT_EQ(demo().get("/projects").status, 200);
    platform.clock().move(3601);
    const Reply refused = demo().get("/projects");
    EXPECT_EQ(refused.status, 401);
    EXPECT_THAT(refused.body, IsJson(R"({"code":40100,"message":"the access token has expired","data":null})"));
    platform.clock().move(-3601);
    EXPECT_EQ(demo().get("/projects").status, 200);
    EXPECT_EQ(control("tokens", R"({"accessToken":"demo-token","expiresIn":0})").status, 200);
    EXPECT_EQ(demo().get("/projects").status, 401);
}

TEST_F(Control, ATokenThatIsRegisteredAnewIsGoodAgain)
{
    EXPECT_EQ(control("tokens", R"({"accessToken":"demo-token","revoked":true,"expiresIn":-1})").status, 200);
    EXPECT_EQ(demo().get("/projects").status, 401);
    EXPECT_EQ(control("users", R"({"userId":"demo","accountId":"demo-account","accessToken":"demo-token"})").status, 200);
    EXPECT_EQ(demo().get("/projects").status, 200);
}

TEST_F(Control, RefusesEndsOfTokensThatItCanNotPut)
{
    EXPECT_THAT(control("tokens", R"({"accessToken":"nobodys","revoked":true})").body, IsJson(refusal(404)));
    EXPECT_THAT(control("tokens", R"({"accessToken":"demo-token"})").body, IsJson(refusal(400)));
    EXPECT_THAT(control("tokens", R"({"revoked":true})").body, IsJson(refusal(400)));
    EXPECT_EQ(demo().get("/projects").status, 200);
}

TEST_F(Control, TellsOfEachKindOfFault)
{
    for (const char* kind : {"delay", "resetBeforeAnswer", "resetAfterBytes", "cutBody", "stall", "garbage"})
        EXPECT_EQ(control("faults", std::string(R"({"path":"/x","kind":")") + kind + "\"}").status, 200) << kind;
    const std::string listed = nobody().get("/_control/faults").body;
    EXPECT_EQ(jsonText(listed, "data.0.kind"), "delay");
    EXPECT_EQ(jsonText(listed, "data.1.kind"), "resetBeforeAnswer");
    EXPECT_EQ(jsonText(listed, "data.2.kind"), "resetAfterBytes");
    EXPECT_EQ(jsonText(listed, "data.3.kind"), "cutBody");
    EXPECT_EQ(jsonText(listed, "data.4.kind"), "stall");
    EXPECT_EQ(jsonText(listed, "data.5.kind"), "garbage");
    EXPECT_EQ(listed.find("\"status\""), std::string::npos);
}

TEST_F(Control, SetsQuotas)
{
    EXPECT_THAT(control("quota", R"({"accountId":"demo-account","projectNumber":3,"spaceSize":10})").body, IsJson(acknowledged));
    EXPECT_THAT(demo().get("/resource/limit").body, IsJson(R"({"code":10000,"message":"OK","data":{"projectNumber":3,"spaceSize":10}})"));
    EXPECT_THAT(control("quota", R"({"accountId":"demo-account","personal":true})").body, IsJson(acknowledged));
    EXPECT_THAT(demo().get("/resource/limit").body, IsJson(acknowledged));
    EXPECT_EQ(control("quota", R"({"accountId":"demo-account","projectNumber":3000000000,"spaceSize":10})").status, 400);
}

TEST_F(Control, SeedsProjectsWithFoldersDatasetsAndFonts)
{
    EXPECT_THAT(control("projects", R"({"id":"p1","name":"A","ownerAccountId":"demo-account","status":"Completed","size":9})").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"p1"}})"));
    EXPECT_THAT(demo().get("/projects?scenario=OWNER").body,
                IsJson(R"([{"creationTime":"<time>","description":"","id":"p1","name":"A","owner":"demo-account","status":"Completed",
                    "size":9}])"));
    EXPECT_EQ(control("folders", R"({"id":"f1","name":"F","parentId":")" + rootFolder("p1") + R"("})").status, 200);
    EXPECT_EQ(control("datasets", R"({"id":"d1","name":"D","folderId":"f1","modelingDatasetId":"m1"})").status, 200);
    EXPECT_EQ(jsonText(demo().post("/dataset/modelingid", R"(["m1"])").body, "data.0.id"), "d1");
    EXPECT_EQ(control("fonts", R"({"id":"font1","name":"F","projectId":"p1","text":"abc"})").status, 200);
    EXPECT_EQ(jsonText(demo().get("/style-family/font/project/list/p1").body, "data.0.resourceBytes"), "3");
    EXPECT_EQ(control("folders", R"({"name":"F","parentId":"none"})").status, 404);
}

TEST_F(Control, SeedsSampleProjects)
{
    EXPECT_EQ(control("projects", R"({"id":"s1","name":"S","sample":true})").status, 200);
    EXPECT_EQ(jsonText(demo().get("/v2/sampleProjects").body, "data.0.id"), "s1");
}

TEST_F(Control, ChangesProjects)
{
    project("p1");
    const Reply reply = nobody().patch("/_control/projects/p1", R"({"gridType":"TYPE_ONE","size":4,"archived":true,
        "standardProperties":[{"propertyId":"a","valueType":"String","stringValue":"高"}]})");
    EXPECT_THAT(reply.body, IsJson(acknowledged));
    EXPECT_THAT(demo().get("/projects?scenario=ARCHIVE").body,
                IsJson(R"([{"creationTime":"<time>","description":"","id":"p1","name":"Tower","owner":"demo-account",
                    "status":"Ongoing","gridType":"TYPE_ONE","size":4,
                    "standardProperties":[{"propertyId":"a","valueType":"String","stringValue":"高"}]}])"));
    EXPECT_EQ(nobody().patch("/_control/projects/p1", R"({"gridType":"TYPE_NINE"})").status, 400);
    EXPECT_EQ(nobody().patch("/_control/projects/p1", R"({"standardProperties":{}})").status, 400);
    EXPECT_EQ(nobody().patch("/_control/projects/none", "{}").status, 404);
}

TEST_F(Control, KeepsTheNumbersOfPropertiesToTheirLastDigit)
{
    project("p1");
    EXPECT_EQ(nobody().patch("/_control/projects/p1", R"({"standardProperties":[123456789.12345679,2.225073858507201e-308,0e67]})").status,
              200);
    EXPECT_THAT(demo().get("/projects").body, testing::HasSubstr("[123456789.12345679,2.225073858507201e-308,0.0]"));
}

TEST_F(Control, GrantsPermissions)
{
    project("p1");
    const Reply reply = control("permissions", R"({"projectId":"p1","accountId":"demo-account","resource":"GridConfig",
        "permissionTypes":["SoftWrite"]})");
    EXPECT_THAT(reply.body, IsJson(acknowledged));
    EXPECT_THAT(demo().get("/projects/p1/users/demo-account/permission").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"resource":"GridConfig","permissionTypes":["SoftWrite"]}]})"));
    EXPECT_EQ(control("permissions", R"({"projectId":"p1","accountId":"a","resource":"r","permissionTypes":["Own"]})").status, 400);
}

TEST_F(Control, AddsCountsAndClearsFaults)
{
    EXPECT_THAT(control("faults", R"({"kind":"status","path":"/projects","method":"GET","status":429,"calls":2})").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":1}})"));
    EXPECT_EQ(demo().get("/projects").status, 429);
    EXPECT_THAT(
        nobody().get("/_control/faults").body,
        IsJson(R"({"code":10000,"message":"OK","data":[{"id":1,"kind":"status","status":429,"path":"/projects","left":1,"struck":1}]})"));
    EXPECT_THAT(nobody().del("/_control/faults").body, IsJson(acknowledged));
    EXPECT_EQ(demo().get("/projects").status, 200);
    EXPECT_EQ(control("faults", R"({"kind":"explode","path":"/projects"})").status, 400);
    EXPECT_EQ(control("faults", R"({"kind":"status","path":"/projects","status":9})").status, 400);
}

TEST_F(Control, IsNeitherStruckNorCounted)
{
    EXPECT_EQ(control("faults", R"({"kind":"status","path":"/","prefix":true,"calls":-1})").status, 200);
    EXPECT_EQ(demo().get("/projects").status, 503);
    EXPECT_EQ(nobody().get("/_control/clock").status, 200);
    EXPECT_EQ(platform.requests().count("", "/"), 1u);
}

TEST_F(Control, MovesTheClock)
{
    const std::string before = platform.clock().text();
    const std::string now = jsonText(control("clock", R"({"seconds":3153600000})").body, "data.now");
    EXPECT_EQ(std::stoi(now.substr(0, 4)) / 100, std::stoi(before.substr(0, 4)) / 100 + 1);
    project("p1");
    const std::string created = jsonText(demo().get("/v2/projects/p1").body, "data.creationTime");
    EXPECT_GE(created, now);
    EXPECT_GE(jsonText(nobody().get("/_control/clock").body, "data.now"), created);
    platform.clock().move(-3153600000);
    EXPECT_EQ(platform.clock().text().substr(0, 2), before.substr(0, 2));
}

TEST_F(Control, CountsRequestsByMethodAndPath)
{
    demo().get("/projects");
    demo().get("/projects/status?status=Ongoing");
    demo().post("/v3/projects", "{}");
    nobody().get("/projects");
    EXPECT_THAT(nobody().get("/_control/requests?method=GET&path=/projects").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"count":3}})"));
    EXPECT_EQ(platform.requests().count("", "/"), 4u);
    EXPECT_EQ(platform.requests().count("POST", "/v3"), 1u);
    EXPECT_THAT(nobody().del("/_control/requests").body, IsJson(acknowledged));
    EXPECT_EQ(platform.requests().count("", "/"), 0u);
}

} // namespace
} // namespace orlo::platform::test
