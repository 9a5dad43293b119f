#include "FolderTrees.h"
#include "support/ProjectObjectTest.h"

#include <OrloProjectManager/Teams/ICollaborationTeam.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* rootTarget = "/projects/p-1/rootfolder";
constexpr const char* subTarget = "/folders/root/subfolders?recursive=true";

class ProjectFoldersWireTest : public ProjectObjectTest
{
protected:
    void expectRoot()
    {
        server.expect("GET", rootTarget)
            .reply(200, R"({"code":10000,"data":{"id":"root","name":"根","folderType":"Process","parentId":"above","teamId":"t-1"}})");
    }
    void expectTree()
    {
        expectRoot();
        server.expect("GET", subTarget)
            .reply(200,
                   R"([{"id":"b","parentId":"root","folderType":"Published"},{"id":"b1","parentId":"b"},{"id":"a","parentId":"root"}])");
        server.expect("GET", "/dataset/byfolder?folderId=root").reply(200, R"([{"id":"d-1"}])");
        server.expect("GET", "/dataset/byfolder?folderId=b").reply(200, "[]");
        server.expect("GET", "/dataset/byfolder?folderId=b1").reply(200, R"([{"id":"d-2"},{"id":"d-3"}])");
        server.expect("GET", "/dataset/byfolder?folderId=a").reply(200, "[]");
    }

    Folders out;
};

TEST_F(ProjectFoldersWireTest, buildsTheTreeBelowTheRootFolder)
{
    expectTree();
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    EXPECT_EQ(drawn(out), L"root{b{b1} a}");
    ASSERT_EQ(out.size(), 1u);
    EXPECT_EQ(out[0]->GetName(), L"根");
    EXPECT_EQ(out[0]->GetFolderType(), 1);
    EXPECT_EQ(out[0]->GetTeam()->GetTeamId(), L"t-1");
    EXPECT_EQ(datasetIds(*out[0]), std::vector<std::string>{"d-1"});
    const ICollaborationFolder* const b = out[0]->GetSubFolders().at(0);
    EXPECT_EQ(b->GetFolderType(), 2);
    EXPECT_EQ(datasetIds(*b->GetSubFolders().at(0)), (std::vector<std::string>{"d-2", "d-3"}));
    expectQuiet();
}

TEST_F(ProjectFoldersWireTest, replacesWhatTheListHeld)
{
    expectTree();
    out = {nullptr, nullptr};
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    EXPECT_EQ(drawn(out), L"root{b{b1} a}");
}

TEST_F(ProjectFoldersWireTest, aRootWithoutSubFoldersStandsAlone)
{
    for (const char* body : {"[]", "{}", "null", R"({"data":[{"id":"a","parentId":"root"}]})"}) {
        expectRoot();
        server.expect("GET", subTarget).reply(200, body);
        server.expect("GET", "/dataset/byfolder?folderId=root").reply(200, "[]");
        EXPECT_TRUE(project->GetProjectFolders(out, error)) << body;
        EXPECT_EQ(drawn(out), L"root") << body;
    }
    expectClear(error);
}

TEST_F(ProjectFoldersWireTest, calledTwiceItBuildsEverythingTwice)
{
    expectTree();
    expectTree();
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    const std::weak_ptr<ICollaborationFolder> first = out.at(0);
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    EXPECT_EQ(server.requestCount(), 12u);
    EXPECT_TRUE(first.expired());
}

TEST_F(ProjectFoldersWireTest, aFailureDropsTheProjectsOwnTreeAndLeavesTheHostsList)
{
    expectTree();
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    std::weak_ptr<ICollaborationFolder> root = out.at(0);
    server.expect("GET", rootTarget).reply(404);
    EXPECT_FALSE(project->GetProjectFolders(out, error));
    EXPECT_EQ(drawn(out), L"root{b{b1} a}");
    out.clear();
    EXPECT_TRUE(root.expired());
}

TEST_F(ProjectFoldersWireTest, theTwoTreesOfAProjectLiveSideBySide)
{
    expectTree();
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    const std::weak_ptr<ICollaborationFolder> root = out.at(0);
    out.clear();
    server.expect("GET", "/folder/byproject?projectId=p-1").reply(200, R"([{"id":"other"}])");
    server.expect("GET", "/dataset/byfolder?folderId=other").reply(200, "[]");
    const std::weak_ptr<ICollaborationFolder> other = project->GetFolders(error).at(0);
    EXPECT_FALSE(root.expired());
    server.expect("GET", rootTarget).reply(404);
    EXPECT_FALSE(project->GetProjectFolders(out, error));
    EXPECT_FALSE(other.expired());
}

TEST_F(ProjectFoldersWireTest, aProjectWithoutAnIdIsRefused)
{
    project = projectOf(L"");
    EXPECT_FALSE(project->GetProjectFolders(out, error));
    expectGenericError(error, 3892314117, L"GenericError", L"invalid projectId");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectFoldersWireTest, aRootFolderWithoutAnIdIsRefusedAfterOneRequest)
{
    for (const char* body : {R"({"data":{"name":"n"}})", R"({"data":{"id":7}})", R"({"data":null})", R"({"data":["root"]})"}) {
        error.Clear();
        server.expect("GET", rootTarget).reply(200, body);
        EXPECT_FALSE(project->GetProjectFolders(out, error)) << body;
        expectGenericError(error, 3892314117, L"GenericError", L"invalid parent folder id");
    }
    EXPECT_EQ(server.requestCount(), 4u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(ProjectFoldersWireTest, anAnswerWithoutDataEndsTheCallInSilence)
{
    server.expect("GET", rootTarget).reply(200, R"({"code":10000,"id":"root"})");
    EXPECT_FALSE(project->GetProjectFolders(out, error));
    expectQuiet();
}

TEST_F(ProjectFoldersWireTest, theRequestForTheRootFailsAsEveryRequestingOperationDoes)
{
    expectFailuresOf({"GET", rootTarget, "", L"OrloWebService::GetRootFolderOfProject - code:",
                      [&](ErrorCode& ec) { return project->GetProjectFolders(out, ec); }},
                     server, log);
    EXPECT_TRUE(out.empty());
}

TEST_F(ProjectFoldersWireTest, theRequestForTheSubFoldersFailsAsEveryRequestingOperationDoes)
{
    RequestingOperation operation{"GET", subTarget, "", L"OrloWebService::GetSubFoldersOfParentFolder - code:",
                                  [&](ErrorCode& ec) { return project->GetProjectFolders(out, ec); }};
    operation.prepare = [&] { expectRoot(); };
    expectFailuresOf(operation, server, log);
    EXPECT_TRUE(out.empty());
}

TEST_F(ProjectFoldersWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    expectTree();
    EXPECT_TRUE(project->GetProjectFolders(out, error));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetProjectFolders 传入的ErrorCode，已有错误存在:earlier"});
    expectClear(error);
}

} // namespace
} // namespace orlo::test
