#include "PlatformFixture.h"

namespace orlo::platform::test {
namespace {

class IssueRoutes : public PlatformTest
{
protected:
    IssueRoutes()
    {
        project("p1");
        platform.change(addTeam, {"p1", "结构组", "t1"});
    }

    static std::string issue(const std::string& title, const std::string& datasets = "[]")
    {
        return R"({"teamId":"t1","userId":"demo","title":")" + title + R"(","description":"d","issueDatasets":)" + datasets + "}";
    }
};

TEST_F(IssueRoutes, AnIssueNeedsATeamAUserATitleAndADescription)
{
    EXPECT_THAT(demo().put("/issue", issue("门")).body, IsJson(R"({"code":0,"msg":"OK","data":{"id":1}})"));
    EXPECT_EQ(demo().put("/issue", issue("")).status, 400);
    EXPECT_EQ(demo().put("/issue", R"({"teamId":"none","userId":"u","title":"t","description":"d"})").status, 404);
    EXPECT_EQ(demo().put("/issue", R"({"teamId":"t1","title":"t","description":"d"})").status, 400);
    EXPECT_EQ(demo().put("/issue", issue("x", "{}")).status, 400);
    EXPECT_EQ(nobody().put("/issue", issue("x")).status, 401);
}

TEST_F(IssueRoutes, IssuesOfATeamAreListedByPages)
{
    demo().put("/issue", issue("门"));
    demo().put("/issue", issue("窗"));
    const std::string body = demo().get("/issue/detail/t1/byteamid?page=1&skipCloudify=0").body;
    EXPECT_EQ(jsonText(body, "data.0.title"), "窗") << "the latest first";
    EXPECT_EQ(jsonText(body, "data.1.title"), "门");
    EXPECT_EQ(jsonText(body, "data.1.memo"), "Open");
    EXPECT_THAT(demo().get("/issue/detail/t1/byteamid?page=2").body, IsJson(R"({"code":0,"msg":"OK","data":[]})"));
    EXPECT_EQ(demo().get("/issue/detail/t1/byteamid?page=0").status, 400);
    EXPECT_EQ(demo().get("/issue/detail/none/byteamid?page=1").status, 404);
    EXPECT_THAT(demo().post("/issue/detail/bydatasetids?page=1", R"(["d"])").body, IsJson(R"({"code":0,"msg":"OK","data":[]})"));
    EXPECT_EQ(demo().post("/issue/detail/bydatasetids?page=1", "{}").status, 400);
}

TEST_F(IssueRoutes, AWrongChangeIsRefusedWithStatus200)
{
    demo().put("/issue", issue("门"));
    const char* const change = R"({"userId":"demo","issueId":1,"memo":""})";
    EXPECT_THAT(demo().post("/issue/reopen", change).body, IsJson(R"({"code":4001,"msg":"the issue is Open: reopen","data":null})"));
    EXPECT_THAT(demo().post("/issue/close", change).body, IsJson(R"({"code":0,"msg":"OK","data":null})"));
    for (const char* action : {"solve", "submit", "deal", "close"})
        EXPECT_THAT(demo().post(std::string("/issue/") + action, change).body, IsJson(R"({"code":4001,"msg":"<text>","data":null})"))
            << action;
    EXPECT_THAT(demo().post("/issue/solve", R"({"userId":"demo","issueId":9,"memo":""})").body,
                IsJson(R"({"code":4001,"msg":"no such issue: 9","data":null})"));
    EXPECT_EQ(demo().post("/issue/solve", R"({"issueId":"1"})").status, 400);
}

TEST_F(IssueRoutes, MessagesAreMarkedByWhomTheyAreFor)
{
    EXPECT_EQ(nobody().post("/_control/messages", R"({"receiver":"demo-account","title":"升级","messageType":"SYSTEM"})").status, 200);
    EXPECT_EQ(nobody().post("/_control/messages", R"({"receiver":"demo-account","title":"x","messageType":"OTHER"})").status, 400);
    EXPECT_EQ(jsonText(demo().get("/messages?status=UNREAD").body, "data.0.title"), "升级");
    EXPECT_THAT(demo().get("/messages?status=READ").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    EXPECT_EQ(demo().get("/messages?status=ALL").status, 400);
    EXPECT_EQ(other().put("/messages/SYSTEM/1/mark/READ", "").status, 404);
    EXPECT_EQ(demo().put("/messages/BUSINESS/1/mark/READ", "").status, 404);
    EXPECT_EQ(demo().put("/messages/SYSTEM/1/mark/ALL", "").status, 400);
    EXPECT_EQ(demo().put("/messages/SYSTEM/1/mark/READ", "").status, 200);
    EXPECT_EQ(jsonText(demo().get("/messages?status=READ").body, "data.0.title"), "升级");
    EXPECT_EQ(demo().put("/messages/SYSTEM/1/mark/UNREAD", "").status, 200);
}

} // namespace
} // namespace orlo::platform::test
