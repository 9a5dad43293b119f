#include "support/ProjectObjectTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Projects/FolderWeb.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using http::ORLOHTTPPayloadFolder;

class FolderWebWireTest : public WireTest
{
protected:
    std::vector<ORLOHTTPPayloadFolder> records;
    ORLOHTTPPayloadFolder record;
};

TEST_F(FolderWebWireTest, listsTheFoldersOfAProject)
{
    server.expect("GET", "/folder/byproject?projectId=p-1").reply(200, R"([{"id":"a","projectId":"p-1"},{"id":"b"}])");
    EXPECT_TRUE(OrloWebService::GetAllFoldersByProject(error, records, L"p-1"));
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].id, L"a");
    EXPECT_EQ(records[0].projectId, L"p-1");
    EXPECT_EQ(records[1].id, L"b");
    expectClear(error);
}

TEST_F(FolderWebWireTest, refusesAProjectWithoutAnId)
{
    EXPECT_FALSE(OrloWebService::GetAllFoldersByProject(error, records, L""));
    expectGenericError(error, 3892314113, L"GenericError", L"invalid projectId");
    EXPECT_FALSE(OrloWebService::GetRootFolderOfProject(error, record, L""));
    expectGenericError(error, 3892314117, L"GenericError", L"invalid projectId");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FolderWebWireTest, readsTheRootFolderFromTheDataWhateverTheCode)
{
    for (const char* body : {R"({"data":{"id":"root","name":"根"}})", R"({"code":10000,"data":{"id":"root","name":"根"}})",
                             R"({"code":500,"data":{"id":"root","name":"根"}})"}) {
        record = {};
        server.expect("GET", "/projects/p-1/rootfolder").reply(200, body);
        EXPECT_TRUE(OrloWebService::GetRootFolderOfProject(error, record, L"p-1"));
        EXPECT_EQ(record.id, L"root") << body;
        EXPECT_EQ(record.name, L"根") << body;
    }
    expectQuiet();
}

TEST_F(FolderWebWireTest, anAnswerWithoutDataHasNoRootFolder)
{
    record.id = L"kept";
    for (const char* body : {R"({"code":10000})", R"({"id":"root"})", "[]", "null", ""}) {
        server.expect("GET", "/projects/p-1/rootfolder").reply(200, body);
        EXPECT_FALSE(OrloWebService::GetRootFolderOfProject(error, record, L"p-1")) << body;
    }
    EXPECT_EQ(record.id, L"kept");
    expectQuiet();
}

TEST_F(FolderWebWireTest, saysInTheQueryWhetherTheSubFoldersAreListedToTheBottom)
{
    server.expect("GET", "/folders/f-1/subfolders?recursive=false").reply(200, R"([{"id":"a","parentId":"f-1"}])");
    server.expect("GET", "/folders/f-1/subfolders?recursive=true").reply(200, R"([{"id":"b","parentId":"a"}])");
    EXPECT_TRUE(OrloWebService::GetSubFoldersOfParentFolder(error, records, L"f-1", false));
    EXPECT_TRUE(OrloWebService::GetSubFoldersOfParentFolder(error, records, L"f-1", true));
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(records[0].id, L"a");
    EXPECT_EQ(records[1].parentId, L"a");
    expectClear(error);
}

TEST_F(FolderWebWireTest, refusesAParentFolderWithoutAnId)
{
    EXPECT_FALSE(OrloWebService::GetSubFoldersOfParentFolder(error, records, L"", false));
    expectGenericError(error, 3892314117, L"GenericError", L"invalid parent folder id");
    EXPECT_EQ(server.requestCount(), 0u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FolderWebWireTest, theListingOfSubFoldersFailsAsEveryRetriedCallDoes)
{
    expectFailuresOf({"GET", "/folders/f-1/subfolders?recursive=false", "", L"OrloWebService::GetSubFoldersOfParentFolder - code:",
                      [&](ErrorCode& ec) {
                          return http::SendNormalRequestWithRetry(&OrloWebService::GetSubFoldersOfParentFolder, false, ec, records, L"f-1",
                                                                  false);
                      }},
                     server, log);
    EXPECT_TRUE(records.empty());
}

} // namespace
} // namespace orlo::test
