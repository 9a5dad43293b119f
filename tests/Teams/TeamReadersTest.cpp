#include <OrloProjectManager/NetworkProject/Teams/TeamReaders.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

CollaborationTeamInfo teamOf(const char* json)
{
    CollaborationTeamInfo team;
    OrloPayloadProcessor::teamFields().read(web::json::value::parse(json), team);
    return team;
}

TEST(TeamReaders, readEveryField)
{
    const CollaborationTeamInfo team =
        teamOf(R"({"id":"t","projectId":"p","linkedFolderId":"f","name":"结构组","status":"Paused","description":"d"})");
    EXPECT_EQ(team.id, L"t");
    EXPECT_EQ(team.projectId, L"p");
    EXPECT_EQ(team.linkedFolderId, L"f");
    EXPECT_EQ(team.name, L"结构组");
    EXPECT_EQ(static_cast<int>(team.status), 1);
    EXPECT_EQ(team.description, L"d");
}

TEST(TeamReaders, aFieldOfAnotherTypeKeepsItsDefault)
{
    const CollaborationTeamInfo team = teamOf(R"({"id":1,"projectId":null,"linkedFolderId":[],"name":{},"status":1,"description":false})");
    EXPECT_EQ(team.id + team.projectId + team.linkedFolderId + team.name + team.description, L"");
    EXPECT_EQ(static_cast<int>(team.status), 0);
}

TEST(TeamReaders, theStatusIsComparedExactlyAndAnUnknownOneReadsAsWorkingEveryTime)
{
    EXPECT_EQ(static_cast<int>(teamOf(R"({"status":"Working"})").status), 0);
    for (const char* json : {R"({"status":"paused"})", R"({"status":"Closed"})", R"({"status":"Closed"})", R"({"status":""})", "{}"})
        EXPECT_EQ(static_cast<int>(teamOf(json).status), 0) << json;
    EXPECT_EQ(static_cast<int>(teamOf(R"({"status":"Paused"})").status), 1);
}

TEST(TeamReaders, aStatusThatIsMissingIsAsItWasAndOneThatIsUnknownIsWorking)
{
    CollaborationTeamInfo team;
    team.status = CollaborationTeamStatus::Paused;
    OrloPayloadProcessor::teamFields().read(web::json::value::parse(R"({"id":"t","status":null})"), team);
    EXPECT_EQ(team.status, CollaborationTeamStatus::Paused);
    OrloPayloadProcessor::teamFields().read(web::json::value::parse(R"({"status":"Lost"})"), team);
    EXPECT_EQ(team.status, CollaborationTeamStatus::Working);
}

} // namespace
} // namespace orlo::test
