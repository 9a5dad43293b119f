#include "support/ProjectObjectTest.h"

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* target = "/projects/p-1/teams";

class TeamsWireTest : public ProjectObjectTest
{
protected:
    std::vector<CollaborationTeamInfo> teams = std::vector<CollaborationTeamInfo>(2);
};

TEST_F(TeamsWireTest, listsTheTeamsInTheOrderOfTheAnswer)
{
    server.expect("GET", target)
        .reply(200, R"({"code":10000,"data":[{"id":"t-2","name":"结构组","projectId":"p-1","linkedFolderId":"f-1","status":"Paused",)"
                    R"("description":"d"},{"id":"t-1","status":"Working"},7]})");
    EXPECT_TRUE(project->GetTeams(teams, error));
    ASSERT_EQ(teams.size(), 3u) << "the list is emptied first";
    EXPECT_EQ(teams[0].id, L"t-2");
    EXPECT_EQ(teams[0].name, L"结构组");
    EXPECT_EQ(teams[0].projectId, L"p-1");
    EXPECT_EQ(teams[0].linkedFolderId, L"f-1");
    EXPECT_EQ(static_cast<int>(teams[0].status), 1);
    EXPECT_EQ(teams[0].description, L"d");
    EXPECT_EQ(teams[1].id, L"t-1");
    EXPECT_EQ(static_cast<int>(teams[1].status), 0);
    EXPECT_EQ(teams[2].id, L"");
    expectQuiet();
}

TEST_F(TeamsWireTest, everyAnswerWithStatus200IsASuccessAndAnOddOneLeavesTheListEmpty)
{
    for (const char* body :
         {R"({"code":500,"data":[{"id":"t-1"}]})", R"({"code":"10000","data":[{"id":"t-1"}]})", R"({"data":[{"id":"t-1"}]})",
          R"({"code":10000})", R"({"code":10000,"data":{"id":"t-1"}})", R"([{"id":"t-1"}])", "null", ""}) {
        teams.resize(2);
        server.expect("GET", target).reply(200, body);
        EXPECT_TRUE(project->GetTeams(teams, error)) << body;
        EXPECT_TRUE(teams.empty()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(TeamsWireTest, aRepeatedRequestDoesNotListTheTeamsTwice)
{
    server.expect("GET", target).reply(503);
    server.expect("GET", target).reply(200, R"({"code":10000,"data":[{"id":"t-1"}]})");
    EXPECT_TRUE(project->GetTeams(teams, error));
    EXPECT_EQ(teams.size(), 1u);
}

TEST_F(TeamsWireTest, failsAsEveryRequestingOperationDoes)
{
    expectFailuresOf(
        {"GET", target, "", L"OrloWebService::GetTeamsInProject - code:", [&](ErrorCode& ec) { return project->GetTeams(teams, ec); }},
        server, log);
    EXPECT_TRUE(teams.empty());
}

TEST_F(TeamsWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", target).reply(200, "{}");
    EXPECT_TRUE(project->GetTeams(teams, error));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetTeams 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

} // namespace
} // namespace orlo::test
