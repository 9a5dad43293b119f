#include "PlatformFixture.h"

#include <regex>

namespace orlo::platform::test {
namespace {

constexpr const char* fine = R"({"code":10000,"message":"OK","data":null})";

class TeamRoutes : public PlatformTest
{
protected:
    TeamRoutes()
    {
        project("p1");
        platform.change(addTeam, {"p1", "结构组", "t1"});
        platform.change(addTeam, {"p1", "机电组", "t2", "pipes", "Paused"});
    }

    std::string dataset(const std::string& id, const std::string& teamId, const std::string& ownerId = "demo-account")
    {
        DatasetSeed dataset;
        dataset.name = "模型 " + id;
        dataset.id = id;
        dataset.teamId = teamId;
        dataset.ownerId = ownerId;
        return platform.change(addDataset, dataset);
    }

    std::string idsAt(const std::string& target) const { return idsOf(demo().get(target)); }
    static std::string idsOf(const Reply& reply)
    {
        EXPECT_EQ(reply.status, 200) << reply.body;
        static const std::regex id(R"re("id":"([^"]*)")re");
        std::string ids;
        for (std::sregex_iterator match(reply.body.begin(), reply.body.end(), id), end; match != end; ++match)
            ids += (*match)[1].str() + " ";
        return ids;
    }
};

TEST_F(TeamRoutes, ATeamIsMadeWithAFolderAndItsMakerForAMember)
{
    const Reply made = demo().post("/v2/teams", R"({"name":"暖通组","projectId":"p1"})");
    EXPECT_THAT(made.body, IsJson(R"({"code":10000,"message":"OK","data":{"id":"<text>","name":"暖通组","description":"",
                                      "linkedFolderId":"<text>","projectId":"p1","status":"Working"}})"));
    const std::string id = jsonText(made.body, "data.id");
    const std::string folder = jsonText(made.body, "data.linkedFolderId");
    EXPECT_EQ(idsOf(demo().post("/teams", R"({"linkedFolderId":")" + folder + R"("})")), id + " ");
    EXPECT_EQ(demo().get("/teams/" + id).status, 200);
    EXPECT_THAT(idsAt("/users/demo-account/projects/p1/teams"), testing::HasSubstr(id));
    EXPECT_EQ(demo().post("/v2/teams", R"({"name":"","projectId":"p1"})").status, 400);
    EXPECT_EQ(demo().post("/v2/teams", R"({"name":"x","projectId":"none"})").status, 404);
}

TEST_F(TeamRoutes, TeamsAreFoundByTheirFoldersAndTheirIds)
{
    EXPECT_EQ(idsOf(demo().post("/teams", R"({"linkedFolderId":"none"})")), "");
    EXPECT_EQ(demo().get("/teams/none").status, 404);
    EXPECT_THAT(demo().get("/teams/t2").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"t2","name":"机电组","description":"pipes",
                                                        "linkedFolderId":"<text>","projectId":"p1","status":"Paused"}})"));
    EXPECT_EQ(jsonText(demo().get("/projects/p1/teams").body, "data.1.id"), "t1") << "behind the team that the project began with";
}

TEST_F(TeamRoutes, MembersComeAndGo)
{
    EXPECT_EQ(idsAt("/users/other-account/projects/p1/teams"), "");
    EXPECT_THAT(demo().post("/teams/t1/users/other-account", "").body, IsJson(fine));
    EXPECT_THAT(demo().post("/teams/t1/users/other-account", "").body, IsJson(fine)) << "who is one stays one";
    EXPECT_EQ(idsAt("/users/other-account/projects/p1/teams"), "t1 ");
    EXPECT_THAT(demo().del("/teams/t1/users/other-account").body, IsJson(fine));
    EXPECT_EQ(demo().del("/teams/t1/users/other-account").status, 404);
    EXPECT_EQ(idsAt("/users/other-account/projects/p1/teams"), "");
    EXPECT_EQ(demo().post("/teams/none/users/other-account", "").status, 404);
    EXPECT_EQ(demo().del("/teams/none/users/other-account").status, 404);
    EXPECT_EQ(demo().get("/users/demo-account/projects/none/teams").status, 404);
}

TEST_F(TeamRoutes, DatasetsOfATeamAreListedByStatus)
{
    dataset("d1", "t1");
    dataset("d2", "t2");
    dataset("d3", "t1", "somebody");
    EXPECT_EQ(idsAt("/teams/t1/dataSets/byStatus"), "d1 d3 ");
    EXPECT_EQ(idsAt("/teams/t1/dataSets/byStatus?status=draft"), "d1 d3 ");
    EXPECT_EQ(idsAt("/teams/t1/dataSets/byStatus?status=committed"), "");
    EXPECT_EQ(demo().get("/teams/t1/dataSets/byStatus?status=lost").status, 400);
    EXPECT_EQ(demo().get("/teams/none/dataSets/byStatus").status, 404);
    EXPECT_EQ(idsOf(demo().post("/v2/search/dataSets/byTeams?status=draft", R"(["t2","t1"])")), "d1 d2 ") << "one's own";
    EXPECT_EQ(idsOf(demo().post("/v2/search/dataSets/byTeams?status=committed", R"(["t1"])")), "");
    EXPECT_EQ(demo().post("/v2/search/dataSets/byTeams?status=draft", "{}").status, 400);
}

TEST_F(TeamRoutes, WhatTeamsTrustEachOtherWithIsTold)
{
    dataset("d1", "t1");
    platform.change(addTrust, {"t1", "t2", "DataSet", "d1"});
    platform.change(addTrust, {"t1", "t2", "Folder", "f1"});
    platform.change(addTrust, {"t1", "t2", "Folder", "f1"});
    EXPECT_THAT(demo().get("/v2/teams/t2/permissionResource?type=TrustBy").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"teamId":"t1","teamName":"结构组",
                          "resources":[{"type":"DataSet","resourceId":"d1"},{"type":"Folder","resourceId":"f1"}]}]})"));
    EXPECT_THAT(demo().get("/teams/t2/permissionResource?type=TrustBy").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"teamId":"t1","teamName":"结构组","resourceId":"f1"}]})"));
    EXPECT_THAT(demo().get("/teams/t1/permissionResource?type=TrustBy").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    EXPECT_EQ(demo().get("/teams/t2/permissionResource").status, 400);
    EXPECT_EQ(demo().get("/teams/t2/permissionResource?type=TrustTo").status, 400);
    EXPECT_EQ(demo().get("/v2/teams/none/permissionResource?type=TrustBy").status, 404);
    EXPECT_THROW(platform.change(addTrust, {"t1", "t2", "Project", "p1"}), std::runtime_error);
}

TEST_F(TeamRoutes, VisitorsAreToldWhatTheyMaySee)
{
    platform.change(addTrust, {"t1", "t2", "Folder", "f1"});
    platform.change(addMember, "t2", "other-account");
    const char* const folder = R"({"code":10000,"message":"OK","data":[{"resourceType":"Folder","resourceId":"f1"}]})";
    const char* const nothing = R"({"code":10000,"message":"OK","data":[]})";
    EXPECT_THAT(demo().post("/permission/query", R"({"visitor":"t2","visitorType":"Team"})").body, IsJson(folder));
    EXPECT_THAT(demo().post("/permission/query", R"({"visitor":"other-account","visitorType":"Personal"})").body, IsJson(folder));
    EXPECT_THAT(demo().post("/permission/query", R"({"visitor":"t1","visitorType":"Team"})").body, IsJson(nothing));
    EXPECT_THAT(demo().post("/permission/query", R"({"visitor":"t2","visitorType":"Role"})").body, IsJson(nothing));
}

TEST_F(TeamRoutes, SharesAreListedForWhoReceivesThem)
{
    dataset("d1", "t1");
    for (const char* file : {"a.zok", "b.zok"}) {
        platform.change(addFile, file, "bytes");
        EXPECT_EQ(demo().put("/dataset/d1/version?sourceFile=" + std::string(file), "{}").status, 200);
    }
    ShareSeed share;
    share.shareId = "t1";
    share.consumedId = "t2";
    share.name = "一审";
    share.contents = {{"d1", 1}, {"d1", 2}};
    share.id = "r1";
    platform.change(addShare, share);
    EXPECT_THAT(
        demo().post("/share/records", R"({"consumedId":"t2"})").body,
        IsJson(R"({"code":10000,"message":"OK","data":[{"id":"r1","shareId":"t1","consumedId":"t2","name":"一审","status":"Shared"}]})"));
    EXPECT_THAT(demo().post("/share/records", R"({"consumedId":"t1"})").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    EXPECT_EQ(demo().post("/share/records", R"({"consumedId":"none"})").status, 404);
    EXPECT_THAT(demo().post("/share/contents", R"(["r1"])").body,
                IsJson(R"({"code":10000,"message":"OK","data":[{"dataSet":{"id":"d1","name":"模型 d1"},
                          "versions":[{"version":1},{"version":2}]}]})"));
    EXPECT_THAT(demo().post("/share/contents", R"(["none"])").body, IsJson(R"({"code":10000,"message":"OK","data":[]})"));
    share.contents = {{"d1", 3}};
    share.id = "r2";
    EXPECT_THROW(platform.change(addShare, share), std::runtime_error) << "no such version";
    share.contents = {};
    share.status = "Lost";
    EXPECT_THROW(platform.change(addShare, share), std::runtime_error);
}

TEST_F(TeamRoutes, ControlCallsMakeThemToo)
{
    EXPECT_THAT(nobody().post("/_control/teams", R"({"projectId":"p1","name":"x","id":"t3"})").body,
                IsJson(R"({"code":10000,"message":"OK","data":{"id":"t3"}})"));
    EXPECT_EQ(nobody().post("/_control/teams", R"({"projectId":"p1","name":"x","id":"t3"})").status, 409);
    EXPECT_THAT(nobody().post("/_control/members", R"({"teamId":"t3","accountId":"other-account"})").body, IsJson(fine));
    EXPECT_EQ(idsAt("/users/other-account/projects/p1/teams"), "t3 ");
    EXPECT_THAT(nobody().post("/_control/trusts", R"({"teamId":"t1","trustedTeamId":"t3","resourceType":"Folder","resourceId":"f"})").body,
                IsJson(fine));
    EXPECT_THAT(
        nobody().post("/_control/shares", R"({"shareId":"t1","consumedId":"t3","name":"x","datasetIds":[],"versions":[],"id":"r1"})").body,
        IsJson(R"({"code":10000,"message":"OK","data":{"id":"r1"}})"));
    EXPECT_EQ(nobody().post("/_control/shares", R"({"shareId":"t1","consumedId":"t3","name":"x","datasetIds":["d"]})").status, 400);
}

} // namespace
} // namespace orlo::platform::test
