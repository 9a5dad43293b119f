#include "FolderTrees.h"
#include "support/ProjectObjectTest.h"

#include <OrloProjectManager/Teams/ICollaborationTeam.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* listing = "/folder/byproject?projectId=p-1";

constexpr const char* tree = R"([{"id":"r1","name":"过程","folderType":"Process","parentId":"","projectId":"p-1","teamId":"t-1"},)"
                             R"({"id":"g1","name":"G","folderType":"OtherFiles","parentId":"c1","projectId":"p-1","teamId":"t-2"},)"
                             R"({"id":"c1","folderType":"TeamRelated","parentId":"r1","teamId":"t-2"},)"
                             R"({"id":"c2","folderType":"ProjectShare","parentId":"r1"},)"
                             R"({"id":"r2","folderType":"Published","parentId":""}])";

class FolderListingWireTest : public ProjectObjectTest
{
protected:
    void expectDatasets(const std::string& folderId, const std::string& answer = "[]")
    {
        server.expect("GET", "/dataset/byfolder?folderId=" + folderId).reply(200, answer);
    }
    void expectTree()
    {
        server.expect("GET", listing).reply(200, tree);
        for (const char* folder : {"r1", "c1", "g1", "c2", "r2"})
            expectDatasets(folder);
    }
    const ICollaborationProject& constant() const { return *project; }
};

TEST_F(FolderListingWireTest, buildsTheTreeAndAsksForTheDatasetsOfEachFolderBeforeThoseOfItsChildren)
{
    expectTree();
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r1{c1{g1} c2} r2");
    expectQuiet();
}

TEST_F(FolderListingWireTest, everyFolderHasTheFieldsOfItsRecord)
{
    expectTree();
    const Folders roots = project->GetFolders(error);
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_EQ(roots[0]->GetName(), L"过程");
    EXPECT_EQ(roots[0]->GetFolderType(), 1);
    EXPECT_EQ(roots[0]->GetTeam()->GetTeamId(), L"t-1");
    EXPECT_EQ(roots[1]->GetName(), L"");
    EXPECT_EQ(roots[1]->GetFolderType(), 2);
    EXPECT_EQ(roots[1]->GetTeam()->GetTeamId(), L"");
    const auto children = roots[0]->GetSubFolders();
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(children[0]->GetFolderType(), 5);
    EXPECT_EQ(children[1]->GetFolderType(), 3);
    const auto grandchildren = children[0]->GetSubFolders();
    ASSERT_EQ(grandchildren.size(), 1u);
    EXPECT_EQ(grandchildren[0]->GetFolderType(), 4);
    EXPECT_EQ(grandchildren[0]->GetName(), L"G");
    EXPECT_EQ(grandchildren[0]->GetTeam()->GetTeamId(), L"t-2");
}

TEST_F(FolderListingWireTest, everyFolderHoldsItsDatasetsInTheOrderOfTheAnswer)
{
    server.expect("GET", listing).reply(200, R"([{"id":"r1","parentId":""},{"id":"c1","parentId":"r1"}])");
    expectDatasets("r1", R"([{"id":"d-2","name":"模型","type":"workunit","ownerId":"o","specialtyId":"s","teamId":"t","projectId":"p",)"
                         R"("description":"x","modelingDatasetId":"m"},{"id":"d-1","type":"dwg"}])");
    expectDatasets("c1", R"([{"id":"d-3"}])");
    const Folders roots = project->GetFolders(error);
    ASSERT_EQ(roots.size(), 1u);
    const auto datasets = roots[0]->GetDatasets();
    ASSERT_EQ(datasets.size(), 2u);
    EXPECT_EQ(datasets[0]->id, "d-2");
    EXPECT_EQ(datasets[0]->modelingDatasetId, "") << "a listing by folder has no key for it";
    EXPECT_EQ(datasets[0]->name, L"模型");
    EXPECT_EQ(static_cast<int>(datasets[0]->type), 2);
    EXPECT_EQ(datasets[0]->ownerId, L"o");
    EXPECT_EQ(datasets[0]->specialtyId, L"s");
    EXPECT_EQ(datasets[0]->teamId, L"t");
    EXPECT_EQ(datasets[0]->projectId, L"p");
    EXPECT_EQ(datasets[0]->description, L"x");
    EXPECT_EQ(datasets[1]->id, "d-1");
    EXPECT_EQ(static_cast<int>(datasets[1]->type), 1);
    EXPECT_EQ(datasetIds(*roots[0]->GetSubFolders().at(0)), std::vector<std::string>{"d-3"});
}

TEST_F(FolderListingWireTest, aListingWithoutARootIsEmptyWhateverElseItHolds)
{
    server.expect("GET", listing).reply(200, R"([{"id":"a","parentId":"x"},{"id":"b","parentId":"a"}])");
    EXPECT_TRUE(project->GetFolders(error).empty());
    expectQuiet();
}

TEST_F(FolderListingWireTest, aRecordWithoutAParentIdThatIsTextIsARoot)
{
    server.expect("GET", listing).reply(200, R"([{"id":"a"},{"id":"b","parentId":null},{"id":"c","parentId":7}])");
    for (const char* folder : {"a", "b", "c"})
        expectDatasets(folder);
    EXPECT_EQ(drawn(project->GetFolders(error)), L"a b c");
}

TEST_F(FolderListingWireTest, theAnswerIsTheBareArray)
{
    for (const char* body : {R"({"code":10000,"data":[{"id":"a"}]})", "{}", "null", "7", "\"[]\"", "[]", ""}) {
        server.expect("GET", listing).reply(200, body);
        EXPECT_TRUE(project->GetFolders(error).empty()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FolderListingWireTest, theProjectIdJoinsThePathAsItStands)
{
    project = projectOf(L"%E7%A4%BA+1");
    server.expect("GET", "/folder/byproject?projectId=%E7%A4%BA+1").reply(200, "[]");
    EXPECT_TRUE(project->GetFolders(error).empty());
    expectClear(error);
}

TEST_F(FolderListingWireTest, calledTwiceItBuildsEverythingTwice)
{
    expectTree();
    expectTree();
    Folders first = project->GetFolders(error);
    const Folders second = project->GetFolders(error);
    EXPECT_EQ(server.requestCount(), 12u);
    ASSERT_EQ(first.size(), 2u);
    ASSERT_EQ(second.size(), 2u);
    EXPECT_NE(first[0], second[0]);
    EXPECT_EQ(drawn(first), L"r1{c1{g1} c2} r2") << "what the host holds stays";
    const std::weak_ptr<ICollaborationFolder> watched = first[0];
    first.clear();
    EXPECT_TRUE(watched.expired()) << "the project has let go of the earlier roots";
}

TEST_F(FolderListingWireTest, aCallThatFailsDropsTheEarlierRootsToo)
{
    expectTree();
    const std::weak_ptr<ICollaborationFolder> watched = project->GetFolders(error).at(0);
    EXPECT_FALSE(watched.expired());
    server.expect("GET", listing).reply(404);
    EXPECT_TRUE(project->GetFolders(error).empty());
    EXPECT_TRUE(watched.expired());
}

TEST_F(FolderListingWireTest, theShortFormGivesTheSame)
{
    expectTree();
    EXPECT_EQ(drawn(project->GetFolders()), L"r1{c1{g1} c2} r2");
    server.expect("GET", listing).reply(404, "gone");
    EXPECT_TRUE(project->GetFolders().empty());
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetAllFoldersByProject - code:404"});
}

TEST_F(FolderListingWireTest, aConstantProjectHandsOutTheRootsOfANewTreeAsRawPointers)
{
    expectTree();
    const std::vector<ICollaborationFolder*> roots = constant().GetFolders(error);
    expectClear(error);
    EXPECT_EQ(drawn(roots), L"r1{c1{g1} c2} r2") << "they live while the project holds the tree";
}

TEST_F(FolderListingWireTest, theShortFormOfAConstantProjectGivesTheSame)
{
    expectTree();
    EXPECT_EQ(drawn(constant().GetFolders()), L"r1{c1{g1} c2} r2");
    server.expect("GET", listing).reply(404, "gone");
    EXPECT_TRUE(constant().GetFolders().empty());
}

TEST_F(FolderListingWireTest, aConstantProjectReportsAFailureAsAnyOther)
{
    server.expect("GET", listing).reply(403, "no");
    EXPECT_TRUE(constant().GetFolders(error).empty());
    expectHttpError(error, -402653182, L"HttpError", L"no", 403);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetAllFoldersByProject - code:403"});
}

TEST_F(FolderListingWireTest, theFoldersOutliveTheirProject)
{
    expectTree();
    Folders roots = project->GetFolders(error);
    project.reset();
    EXPECT_EQ(drawn(roots), L"r1{c1{g1} c2} r2");
}

TEST_F(FolderListingWireTest, theChildrenOfAFolderLiveAsLongAsTheFolder)
{
    expectTree();
    const std::shared_ptr<ICollaborationFolder> root = project->GetFolders(error).at(0);
    const std::vector<ICollaborationFolder*> children = root->GetSubFolders();
    project.reset();
    EXPECT_EQ(drawn(children), L"c1{g1} c2");
}

TEST_F(FolderListingWireTest, aDatasetListingThatFailsLeavesThatFolderWithoutDatasetsAndIsNotReported)
{
    server.expect("GET", listing).reply(200, R"([{"id":"a"},{"id":"b"},{"id":"c"},{"id":"d"},{"id":"e"}])");
    server.expect("GET", "/dataset/byfolder?folderId=a").reply(500, "busy");
    expectDatasets("b", R"([{"id":"d-1"}])");
    server.expect("GET", "/dataset/byfolder?folderId=c").reset();
    server.expect("GET", "/dataset/byfolder?folderId=d").reply(204);
    expectDatasets("e", R"({"code":10000,"data":[{"id":"d-2"}]})");
    const Folders roots = project->GetFolders(error);
    EXPECT_EQ(drawn(roots), L"a b c d e");
    expectClear(error);
    EXPECT_EQ(datasetIds(*roots.at(0)), std::vector<std::string>{});
    EXPECT_EQ(datasetIds(*roots.at(1)), std::vector<std::string>{"d-1"});
    EXPECT_EQ(datasetIds(*roots.at(2)), std::vector<std::string>{});
    EXPECT_EQ(datasetIds(*roots.at(3)), std::vector<std::string>{});
    EXPECT_EQ(datasetIds(*roots.at(4)), std::vector<std::string>{});
    EXPECT_EQ(log.lines(), (Lines{L"E [ORLOSDK]OrloWebService::GetDataSetsByFolder - code:500",
                                  L"E [ORLOSDK]OrloWebService::GetDataSetsByFolder - code:204"}));
    EXPECT_EQ(server.requestCount(), 6u) << "the listing of a folder is not retried";
}

TEST_F(FolderListingWireTest, aFolderWhoseIdFitsNoAddressStaysInTheTreeWithoutDatasets)
{
    server.expect("GET", listing).reply(200, R"([{"id":"a b"},{"id":"c","parentId":"a b"}])");
    expectDatasets("c", R"([{"id":"d-1"}])");
    const Folders roots = project->GetFolders(error);
    EXPECT_EQ(drawn(roots), L"a b{c}");
    expectClear(error);
    ASSERT_EQ(log.entries().size(), 1u);
    EXPECT_EQ(log.entries()[0].function, "orlo::ProjectManager::GetDatasetInfosInFolder");
}

TEST_F(FolderListingWireTest, aProjectWithoutAnIdIsRefused)
{
    project = projectOf(L"");
    EXPECT_TRUE(project->GetFolders(error).empty());
    expectGenericError(error, 3892314113, L"GenericError", L"invalid projectId");
    EXPECT_EQ(log.lines(), Lines{});
    EXPECT_EQ(server.requestCount(), 0u);
}

TEST_F(FolderListingWireTest, failsAsEveryRequestingOperationDoes)
{
    expectFailuresOf({"GET", listing, "", L"OrloWebService::GetAllFoldersByProject - code:",
                      [&](ErrorCode& ec) { return !project->GetFolders(ec).empty(); }},
                     server, log);
}

TEST_F(FolderListingWireTest, aListingThatSucceedsAtLastGivesTheTree)
{
    server.expect("GET", listing).reply(503, "busy");
    expectTree();
    EXPECT_EQ(drawn(project->GetFolders(error)), L"r1{c1{g1} c2} r2");
    expectClear(error);
}

TEST_F(FolderListingWireTest, anEarlierErrorIsLoggedAndWiped)
{
    error.Assign(0xE8000002, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", listing).reply(200, "[]");
    project->GetFolders(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::Project::GetFolders 传入的ErrorCode，已有错误存在:earlier"});
    EXPECT_EQ(log.entries()[0].tag, L"[ORLOSDK]");
    expectClear(error);
}

} // namespace
} // namespace orlo::test
