#include "PlatformFixture.h"
#include "support/TempFolder.h"

namespace orlo::platform::test {
namespace {

constexpr const char* good = R"({"code":10000,"msg":"OK","data":null})";

std::string monitorRefusal(int status)
{
    return R"({"code":)" + std::to_string(status) + R"(00,"msg":"<text>","data":null})";
}

class MonitorRoutes : public PlatformTest
{
protected:
    MonitorRoutes()
    {
        project("p1");
        DatasetSeed dataset;
        dataset.name = "大厅";
        dataset.id = "d1";
        dataset.teamId = teamOf("p1");
        platform.change(addDataset, dataset);
    }

    /// Asks and gets a token.
    static std::string granted(const Caller& caller, const std::string& target)
    {
        const Reply reply = caller.post(target, "");
        EXPECT_EQ(reply.status, 200) << reply.body;
        return jsonText(reply.body, "data.token");
    }
    std::string written() { return granted(demo(), "/v3/dataset/d1/xmonitor/apply?ack=1"); }
    static Reply acknowledged(const Caller& caller, const std::string& token)
    {
        return caller.put("/dataset/d1/monitor/ack?token=" + token, "");
    }
    static Reply released(const Caller& caller, const std::string& token, const std::string& force = "false")
    {
        return caller.put("/dataset/monitor/" + token + "/release?force=" + force, "");
    }
    std::string writers(const std::string& ids = R"(["d1"])") const { return demo().post("/dataset/xmonitor/list", ids).body; }
};

TEST_F(MonitorRoutes, TheRightToWriteIsGrantedToOneAtATime)
{
    EXPECT_THAT(demo().post("/v3/dataset/d1/xmonitor/apply?ack=1", "").body,
                IsJson(R"({"code":10000,"msg":"OK","data":{"token":"<text>","monitor":2}})"));
    const Reply refused = other().post("/v3/dataset/d1/xmonitor/apply?ack=1", "");
    EXPECT_EQ(refused.status, 409);
    EXPECT_THAT(refused.body, IsJson(R"({"code":40900,"msg":"demo is writing the dataset","data":null})"));
    EXPECT_EQ(other().post("/v3/dataset/none/xmonitor/apply?ack=1", "").status, 404);
    EXPECT_THAT(other().post("/v3/dataset/none/xmonitor/apply?ack=1", "").body, IsJson(monitorRefusal(404)));
}

TEST_F(MonitorRoutes, TheRightToReadIsGrantedToAll)
{
    written();
    EXPECT_THAT(other().post("/dataset/d1/smonitor/apply?ack=1", "").body,
                IsJson(R"({"code":10000,"msg":"OK","data":{"token":"<text>","monitor":1}})"));
    EXPECT_NE(granted(demo(), "/dataset/d1/smonitor/apply?ack=1"), granted(demo(), "/dataset/d1/smonitor/apply?ack=1"));
    EXPECT_EQ(other().post("/dataset/none/smonitor/apply?ack=1", "").status, 404);
}

TEST_F(MonitorRoutes, AnAcknowledgementWantsTheTokenOfTheCaller)
{
    const std::string token = written();
    EXPECT_EQ(acknowledged(other(), token).status, 404);
    EXPECT_EQ(acknowledged(demo(), "none").status, 404);
    EXPECT_EQ(demo().put("/dataset/d1/monitor/ack", "").status, 400);
    EXPECT_THAT(acknowledged(demo(), token).body, IsJson(good));
}

TEST_F(MonitorRoutes, WhatIsNotAcknowledgedLapsesInAMinute)
{
    const std::string token = written();
    platform.clock().move(61);
    EXPECT_EQ(acknowledged(demo(), token).status, 404);
    EXPECT_EQ(other().post("/v3/dataset/d1/xmonitor/apply?ack=1", "").status, 200);
}

TEST_F(MonitorRoutes, ALeaseLapsesAfterTwelveHours)
{
    const std::string token = written();
    EXPECT_EQ(acknowledged(demo(), token).status, 200);
    platform.clock().move(12 * 60 * 60 - 30);
    EXPECT_THAT(writers(), testing::HasSubstr(token));
    platform.clock().move(31);
    EXPECT_THAT(writers(), IsJson(R"({"code":10000,"msg":"OK","data":[]})"));
    EXPECT_EQ(released(demo(), token).status, 404);
}

TEST_F(MonitorRoutes, ATokenIsReleasedByItsHolderOrByForce)
{
    const std::string token = written();
    EXPECT_EQ(released(other(), token).status, 403);
    EXPECT_THAT(released(other(), token).body, IsJson(R"({"code":40300,"msg":"the token is that of demo","data":null})"));
    EXPECT_THAT(released(demo(), token).body, IsJson(good));
    EXPECT_EQ(released(demo(), token).status, 404);
    EXPECT_THAT(released(other(), written(), "true").body, IsJson(good));
    EXPECT_EQ(other().put("/dataset/monitor/" + written() + "/release", "").status, 400);
}

TEST_F(MonitorRoutes, AskingAgainReplacesTheToken)
{
    const std::string first = written();
    const std::string second = granted(demo(), "/v3/dataset/d1/xmonitor/apply?token=" + first + "&ack=1");
    EXPECT_NE(first, second);
    EXPECT_EQ(released(demo(), first).status, 404);
    EXPECT_EQ(released(demo(), second).status, 200);
}

TEST_F(MonitorRoutes, WhoWritesIsListed)
{
    granted(demo(), "/dataset/d1/smonitor/apply?ack=1");
    EXPECT_THAT(writers(), IsJson(R"({"code":10000,"msg":"OK","data":[]})")) << "readers aren't";
    const std::string token = written();
    EXPECT_THAT(writers(), IsJson(R"({"code":10000,"msg":"OK","data":[{"dsId":"d1","monitor":2,"token":")" + token + R"("}]})"));
    EXPECT_THAT(writers("[]"), IsJson(R"({"code":10000,"msg":"OK","data":[]})"));
    EXPECT_EQ(demo().post("/dataset/xmonitor/list", "{}").status, 400);
}

TEST_F(MonitorRoutes, TheRightsOfAnAccountDecide)
{
    platform.change(grantPermission, "p1", "demo-account", "d1", std::vector<std::string>{"Read", "SoftWrite"});
    EXPECT_THAT(demo().post("/v3/dataset/d1/xmonitor/apply?ack=1", "").body,
                IsJson(R"({"code":10000,"msg":"OK","data":{"token":"<text>","monitor":3}})"));
    platform.change(grantPermission, "p1", "demo-account", "d1", std::vector<std::string>{"Read"});
    EXPECT_EQ(demo().post("/v3/dataset/d1/xmonitor/apply?ack=1", "").status, 403);
    EXPECT_EQ(demo().post("/dataset/d1/smonitor/apply?ack=1", "").status, 200);
    platform.change(grantPermission, "p1", "demo-account", "d1", std::vector<std::string>{"Write"});
    EXPECT_EQ(demo().post("/v3/dataset/d1/xmonitor/apply?ack=1", "").status, 200);
    EXPECT_EQ(demo().post("/dataset/d1/smonitor/apply?ack=1", "").status, 403);
}

TEST(MonitorsOfAFolder, SurviveARestartOfThePlatform)
{
    const orlo::test::TempFolder folder;
    const Options kept{folder.path("平台").u8string(), 0, true};
    std::string token;
    {
        LocalPlatform first(kept);
        first.change(addProject, {"Tower", "demo-account", "p1"});
        first.start();
        const Caller demo(first.url(), "demo-token");
        DatasetSeed dataset;
        dataset.name = dataset.id = "d1";
        dataset.teamId = jsonText(demo.get("/projects/p1/teams").body, "data.0.id");
        first.change(addDataset, dataset);
        token = jsonText(demo.post("/v3/dataset/d1/xmonitor/apply?ack=1", "").body, "data.token");
        EXPECT_EQ(demo.put("/dataset/d1/monitor/ack?token=" + token, "").status, 200);
    }
    LocalPlatform second(kept);
    second.change(addUser, {"other", "demo-account", "other-token"});
    second.start();
    EXPECT_THAT(Caller(second.url(), "other-token").post("/v3/dataset/d1/xmonitor/apply?ack=1", "").body,
                IsJson(R"({"code":40900,"msg":"demo is writing the dataset","data":null})"));
    EXPECT_EQ(Caller(second.url(), "demo-token").put("/dataset/monitor/" + token + "/release?force=false", "").status, 200);
}

TEST_F(MonitorRoutes, AccessTokensAreNeeded)
{
    EXPECT_EQ(nobody().post("/v3/dataset/d1/xmonitor/apply?ack=1", "").status, 401);
    EXPECT_EQ(nobody().post("/dataset/xmonitor/list", R"(["d1"])").status, 401);
}

} // namespace
} // namespace orlo::platform::test
