#include "support/ProjectObjectTest.h"

#include <OrloProjectManager/Projects/ICollaborationFolder.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

// a{b c{c1{c2} c3}} d{d1 d2}, told with the children in front of their parents.
constexpr const char* tree = R"([{"id":"d2","parentId":"d","folderType":"Archive","teamId":"t-1"},)"
                             R"({"id":"c2","parentId":"c1","folderType":"Published","teamId":"t-1"},)"
                             R"({"id":"c1","parentId":"c","folderType":"Process","teamId":"t-1"},)"
                             R"({"id":"c3","parentId":"c","folderType":"Published","teamId":"t-1"},)"
                             R"({"id":"a","folderType":"Process","teamId":"t-1"},)"
                             R"({"id":"b","parentId":"a","folderType":"TeamRelated","teamId":"t-2"},)"
                             R"({"id":"c","parentId":"a","folderType":"TeamRelated","teamId":"t-1"},)"
                             R"({"id":"d","folderType":"TeamRelated","teamId":"t-1"},)"
                             R"({"id":"d1","parentId":"d","folderType":"OtherFiles","teamId":"t-1"}])";

class TeamFolderWireTest : public ProjectObjectTest
{
protected:
    void expectFolders(const std::string& folders, const std::vector<std::string>& order)
    {
        server.expect("GET", "/folder/byproject?projectId=p-1").reply(200, folders);
        for (const std::string& folder : order)
            server.expect("GET", "/dataset/byfolder?folderId=" + folder).reply(200, "[]");
    }

    /// The id of the folder that is found, or "none".
    std::wstring found(const std::wstring& teamId, int folderType)
    {
        expectFolders(tree, {"a", "b", "c", "c1", "c2", "c3", "d", "d2", "d1"});
        const ICollaborationFolder* const folder = project->GetTeamFolder(teamId, folderType);
        server.verify();
        return folder ? folder->GetId() : L"none";
    }
};

TEST_F(TeamFolderWireTest, goesDeepBeforeItGoesOn)
{
    EXPECT_EQ(found(L"t-1", 2), L"c2");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(TeamFolderWireTest, searchesInTheFolderOfTheTeamOnly)
{
    EXPECT_EQ(found(L"t-1", 1), L"c1") << "the folder a has the type and the team, and is not in the team's folder";
}

TEST_F(TeamFolderWireTest, theFolderOfTheTeamIsVisitedFirst)
{
    EXPECT_EQ(found(L"t-1", 5), L"c");
    EXPECT_EQ(found(L"t-2", 5), L"b");
}

TEST_F(TeamFolderWireTest, onlyTheFirstFolderOfTheTeamIsSearched)
{
    EXPECT_EQ(found(L"t-1", 4), L"none");
    EXPECT_EQ(found(L"t-1", 0), L"none");
}

TEST_F(TeamFolderWireTest, findsNothingForATeamWithoutAFolder)
{
    EXPECT_EQ(found(L"t-3", 5), L"none");
    EXPECT_EQ(found(L"", 5), L"none");
    EXPECT_EQ(found(L"T-1", 5), L"none");
    EXPECT_EQ(found(L"t-2", 1), L"none");
    EXPECT_EQ(found(L"t-1", 6), L"none");
}

TEST_F(TeamFolderWireTest, anUnknownTypeIsFoundAsZero)
{
    expectFolders(R"([{"id":"t","folderType":"TeamRelated","teamId":"t-1"},{"id":"x","parentId":"t","folderType":"Archive"}])", {"t", "x"});
    const ICollaborationFolder* const folder = project->GetTeamFolder(L"t-1", 0);
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->GetId(), L"x");
}

TEST_F(TeamFolderWireTest, aFolderOfNoTeamBelongsToTheTeamWithoutAnId)
{
    expectFolders(R"([{"id":"t","folderType":"TeamRelated"}])", {"t"});
    const ICollaborationFolder* const folder = project->GetTeamFolder(L"", 5);
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->GetId(), L"t");
}

TEST_F(TeamFolderWireTest, thePointerLivesWhileTheProjectHoldsTheTree)
{
    expectFolders(tree, {"a", "b", "c", "c1", "c2", "c3", "d", "d2", "d1"});
    const ICollaborationFolder* const folder = project->GetTeamFolder(L"t-1", 5);
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->GetSubFolders().size(), 2u);
}

TEST_F(TeamFolderWireTest, findsNothingWhereTheFoldersCannotBeListed)
{
    server.expect("GET", "/folder/byproject?projectId=p-1").reply(404, "gone");
    EXPECT_EQ(project->GetTeamFolder(L"t-1", 5), nullptr);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetAllFoldersByProject - code:404"});
}

TEST_F(TeamFolderWireTest, aProjectWithoutAnIdHasNoTeamFolders)
{
    EXPECT_EQ(projectOf(L"")->GetTeamFolder(L"t-1", 5), nullptr);
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

} // namespace
} // namespace orlo::test
