#include <OrloProjectManager/NetworkProject/Projects/FolderReaders.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using http::ORLOHTTPPayloadFolder;

ORLOHTTPPayloadFolder folderOf(const char* json)
{
    ORLOHTTPPayloadFolder record;
    OrloPayloadProcessor::folderFields().read(web::json::value::parse(json), record);
    return record;
}

CollaborationTeamInfo teamOf(const char* json)
{
    CollaborationTeamInfo team;
    OrloPayloadProcessor::teamFields().read(web::json::value::parse(json), team);
    return team;
}

TEST(FolderReaders, readEveryFieldOfAFolder)
{
    const ORLOHTTPPayloadFolder record =
        folderOf(R"({"teamId":"t","projectId":"p","parentId":"q","folderType":"Process","name":"模型","id":"f","extra":{"id":"x"}})");
    EXPECT_EQ(record.id, L"f");
    EXPECT_EQ(record.name, L"模型");
    EXPECT_EQ(record.folderType, L"Process");
    EXPECT_EQ(record.parentId, L"q");
    EXPECT_EQ(record.projectId, L"p");
    EXPECT_EQ(record.teamId, L"t");
}

TEST(FolderReaders, aFieldOfAnotherTypeKeepsItsDefault)
{
    const ORLOHTTPPayloadFolder record =
        folderOf(R"({"id":1,"name":null,"folderType":["Process"],"parentId":{},"projectId":true,"teamId":1.5})");
    EXPECT_EQ(record.id + record.name + record.folderType + record.parentId + record.projectId + record.teamId, L"");
    EXPECT_EQ(folderOf("[]").id, L"");
    EXPECT_EQ(folderOf("null").id, L"");
}

TEST(FolderReaders, readEveryFieldOfATeam)
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

TEST(FolderReaders, aTeamFieldOfAnotherTypeKeepsItsDefault)
{
    const CollaborationTeamInfo team = teamOf(R"({"id":1,"projectId":null,"linkedFolderId":[],"name":{},"status":1,"description":false})");
    EXPECT_EQ(team.id + team.projectId + team.linkedFolderId + team.name + team.description, L"");
    EXPECT_EQ(static_cast<int>(team.status), 0);
}

TEST(FolderReaders, theStatusOfATeamIsComparedExactlyAndAnUnknownOneReadsAsWorkingEveryTime)
{
    EXPECT_EQ(static_cast<int>(teamOf(R"({"status":"Working"})").status), 0);
    for (const char* json : {R"({"status":"paused"})", R"({"status":"Closed"})", R"({"status":"Closed"})", R"({"status":""})", "{}"})
        EXPECT_EQ(static_cast<int>(teamOf(json).status), 0) << json;
    EXPECT_EQ(static_cast<int>(teamOf(R"({"status":"Paused"})").status), 1);
}

} // namespace
} // namespace orlo::test
