#include "support/Patterns.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

constexpr const wchar_t* listing = L"E@orlo::CollaborationFileManager::GetFileInfoInFolder ";

/// The folder "f-2" lies in "f-1".
class FileExistenceTest : public WireTest
{
protected:
    bool exists(const std::wstring& folderId, const std::wstring& path)
    {
        return ICollaborationFileManager::IsFileExistInProject("p-1", folderId, path, dsId);
    }
    bool exists() { return exists(L"f-2", L"/home/me/plan.dwg"); }

    Expectation& expectProject() { return server.expect("GET", "/v2/projects/p-1"); }
    Expectation& expectFolders() { return server.expect("GET", "/folder/byproject?projectId=p-1"); }
    void expectTree(const std::string& datasets)
    {
        expectProject().reply(200, R"({"code":10000,"data":{"id":"p-1","name":"Tower"}})");
        expectFolders().reply(200, R"([{"id":"f-1","parentId":""},{"id":"f-2","parentId":"f-1"}])");
        server.expect("GET", "/dataset/byfolder?folderId=f-1").reply(200, R"([{"id":"of-parent","name":"plan.dwg"}])");
        server.expect("GET", "/dataset/byfolder?folderId=f-2").reply(200, datasets);
    }
    void expectNotFound(bool result)
    {
        EXPECT_FALSE(result);
        EXPECT_EQ(dsId, L"untouched");
        server.verify();
    }

    std::wstring dsId = L"untouched";
};

TEST_F(FileExistenceTest, givesTheDatasetWithTheNameOfTheFile)
{
    expectTree(R"([{"id":"d-1","name":"roof.dwg"},{"id":"d-2 图","name":"plan.dwg"}])");
    EXPECT_TRUE(exists());
    EXPECT_EQ(dsId, L"d-2 图");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FileExistenceTest, ofTwoDatasetsWithTheNameTheFirstIsTaken)
{
    expectTree(R"([{"id":"d-1","name":"plan.dwg"},{"id":"d-2","name":"plan.dwg"}])");
    EXPECT_TRUE(exists());
    EXPECT_EQ(dsId, L"d-1");
}

TEST_F(FileExistenceTest, comparesNamesExactly)
{
    expectTree(R"([{"id":"a","name":"Plan.dwg"},{"id":"b","name":"plan.DWG"},{"id":"c","name":"plan"},{"id":"d","name":"plan.dwg "}])");
    expectNotFound(exists());
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FileExistenceTest, comparesTheLastPartOfThePathAlone)
{
    expectTree(R"([{"id":"d-1","name":"me/平面图.dwg"},{"id":"d-2","name":"平面图.dwg"}])");
    EXPECT_TRUE(exists(L"f-2", L"/home/me/平面图.dwg"));
    EXPECT_EQ(dsId, L"d-2");
}

TEST_F(FileExistenceTest, aFolderWithoutTheNameHasNoSuchFile)
{
    expectTree("[]");
    expectNotFound(exists());
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FileExistenceTest, datasetsThatCanNotBeListedAreNone)
{
    expectProject().reply(200, R"({"code":10000,"data":{"id":"p-1"}})");
    expectFolders().reply(200, R"([{"id":"f-2","parentId":""}])");
    server.expect("GET", "/dataset/byfolder?folderId=f-2").reply(404);
    expectNotFound(exists());
}

TEST_F(FileExistenceTest, aProjectThatCanNotBeLoadedIsTold)
{
    expectProject().reply(404, "gone");
    expectNotFound(exists());
    EXPECT_EQ(log.lines(), Lines{listing + std::wstring(L"currentProject is empty")});
}

TEST_F(FileExistenceTest, foldersThatCanNotBeListedAreTold)
{
    expectProject().reply(200, R"({"code":10000,"data":{"id":"p-1"}})");
    expectFolders().reply(403, "not you");
    expectNotFound(exists());
    EXPECT_EQ(log.lines(),
              (Lines{L"E [ORLOSDK]OrloWebService::GetAllFoldersByProject - code:403", listing + std::wstring(L"get folder fail")}));
}

TEST_F(FileExistenceTest, anUnknownFolderIsTold)
{
    for (const wchar_t* folder : {L"f-3", L"", L"F-2"}) {
        log.clear();
        expectTree(R"([{"id":"d-2","name":"plan.dwg"}])");
        expectNotFound(exists(folder, L"plan.dwg"));
        EXPECT_EQ(log.lines(), Lines{listing + std::wstring(L"can not find folder in web")});
    }
}

TEST_F(FileExistenceTest, theWordsCarryTheirPlace)
{
    expectProject().reply(404, "gone");
    EXPECT_FALSE(exists());
    ASSERT_EQ(log.entries().size(), 1u);
    const LogEntry entry = log.entries().front();
    EXPECT_EQ(entry.function, "orlo::CollaborationFileManager::GetFileInfoInFolder");
    EXPECT_THAT(entry.source, FitsPattern("source/OrloProjectManager/.*\\.cpp"));
    EXPECT_GT(entry.line, 0);
    EXPECT_EQ(entry.tag, L"[ORLOSDK]");
}

TEST_F(FileExistenceTest, projectAndFoldersAreAskedForAgain)
{
    expectProject().times(3).reply(503, "");
    expectProject().reply(200, R"({"code":10000,"data":{"id":"p-1"}})");
    expectFolders().times(3).reply(503, "");
    expectFolders().reply(200, R"([{"id":"f-2","parentId":""}])");
    server.expect("GET", "/dataset/byfolder?folderId=f-2").reply(200, R"([{"id":"d-2","name":"plan.dwg"}])");
    EXPECT_TRUE(exists());
    EXPECT_EQ(dsId, L"d-2");
}

TEST_F(FileExistenceTest, theDatasetsOfAFolderAreAskedForOnce)
{
    for (const bool resets : {true, false}) {
        expectProject().reply(200, R"({"code":10000,"data":{"id":"p-1"}})");
        expectFolders().reply(200, R"([{"id":"f-2","parentId":""}])");
        Expectation& datasets = server.expect("GET", "/dataset/byfolder?folderId=f-2");
        resets ? datasets.reset() : datasets.reply(503, "busy");
        expectNotFound(exists());
    }
}

TEST_F(FileExistenceTest, withoutAnAddressOfTheServiceThereIsNoSuchFileAndNothingIsThrown)
{
    OrloConfigManager::Configure({});
    expectNotFound(exists());
    EXPECT_TRUE(log.has(listing + std::wstring(L"currentProject is empty")));
}

} // namespace
} // namespace orlo::test
