#include "DatasetInfoMatch.h"
#include "support/RequestFailures.h"
#include "support/WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

constexpr const char* dataset = R"({"id":"d-1","modelingDatasetId":"m-1","name":"图纸","type":"dwg","description":"x","ownerId":"o",)"
                                R"("specialtyId":"s","teamId":"t","projectId":"p","folderId":"f"})";

void expectDataset(const DatasetInfo& info)
{
    EXPECT_EQ(info.id, "d-1");
    EXPECT_EQ(info.modelingDatasetId, "m-1");
    EXPECT_EQ(info.name, L"图纸");
    EXPECT_EQ(static_cast<int>(info.type), 1);
    EXPECT_EQ(info.description, L"x");
    EXPECT_EQ(info.ownerId, L"o");
    EXPECT_EQ(info.specialtyId, L"s");
    EXPECT_EQ(info.teamId, L"t");
    EXPECT_EQ(info.projectId, L"p");
}

class DatasetInfoWireTest : public WireTest
{
protected:
    ICollaborationProjectManager& manager = *ICollaborationProjectManager::Get();
};

TEST_F(DatasetInfoWireTest, readsADatasetByItsId)
{
    server.expect("GET", "/v2/dataSets/d-1").times(2).reply(200, R"({"code":10000,"data":)" + std::string(dataset) + "}");
    expectDataset(manager.GetDatasetInfo("d-1", error));
    expectClear(error);
    expectDataset(manager.GetDatasetInfo("d-1"));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetInfoWireTest, anAnswerWithoutTheMarkIsLoggedWithItsBody)
{
    server.expect("GET", "/v2/dataSets/d-1").reply(200, R"({"code":40004,"message":"没有"})");
    server.expect("GET", "/v2/dataSets/d-1").reply(200, R"({"code":"10000","data":{}})");
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    expectClear(error);
    EXPECT_EQ(log.lines(),
              (Lines{L"E [ORLOSDK]OrloWebService::GetDatasetInfo - response is not normal: {\"code\":40004,\"message\":\"没有\"}",
                     L"E [ORLOSDK]OrloWebService::GetDatasetInfo - response is not normal: {\"code\":\"10000\",\"data\":{}}"}));
}

TEST_F(DatasetInfoWireTest, anAnswerWithoutDataIsAnEmptyRecord)
{
    server.expect("GET", "/v2/dataSets/d-1").reply(200, R"({"code":10000})");
    server.expect("GET", "/v2/dataSets/d-1").reply(200, R"({"code":10000,"data":"d-1"})");
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    expectClear(error);
}

TEST_F(DatasetInfoWireTest, aReadFailsAsEveryDirectCallDoes)
{
    RequestingOperation read{"GET", "/v2/dataSets/d-1", "", L"OrloWebService::GetDatasetInfo - code:", [&](ErrorCode& ec) {
                                 expectEmpty(manager.GetDatasetInfo("d-1", ec));
                                 return false;
                             }};
    read.frame = L"orlo::ProjectManager::GetDatasetInfo";
    read.goodAnswer = R"({"code":10000,"data":)" + std::string(dataset) + "}";
    expectFailuresOf(read, server, log);
}

TEST_F(DatasetInfoWireTest, anEarlierErrorSurvivesADirectCallThatSucceeds)
{
    error.Assign(0xE8000001, std::make_shared<GenericError>(L"earlier"));
    server.expect("GET", "/v2/dataSets/d-1").reply(200, R"({"code":10000,"data":)" + std::string(dataset) + "}");
    expectDataset(manager.GetDatasetInfo("d-1", error));
    expectGenericError(error, 3892314113, L"GenericError", L"earlier");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::GetDatasetInfo 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_F(DatasetInfoWireTest, readsADatasetByItsModelingId)
{
    server.expect("POST", "/dataset/modelingid").body(R"(["m-1"])").reply(200, R"({"data":[)" + std::string(dataset) + "]}");
    expectDataset(manager.GetDatasetInfoByModelingId("m-1", error));
    expectQuiet();
}

TEST_F(DatasetInfoWireTest, aModelingIdMustNameExactlyOneDataset)
{
    const std::string one(dataset);
    const std::string bodies[] = {R"({"code":10000,"data":[]})",
                                  R"({"code":10000,"data":[)" + one + "," + one + "]}",
                                  R"({"code":10000,"data":)" + one + "}",
                                  R"({"code":10000})",
                                  "[]",
                                  "null"};
    for (const std::string& body : bodies) {
        server.expect("POST", "/dataset/modelingid").body(R"(["m-1"])").reply(200, body);
        expectEmpty(manager.GetDatasetInfoByModelingId("m-1", error));
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetInfoWireTest, aReadByModelingIdFailsAsEveryDirectCallDoesUnderSharedWords)
{
    RequestingOperation read{"POST", "/dataset/modelingid", R"(["m-1"])", L"OrloWebService::getProjectIdByModelingId - code:",
                             [&](ErrorCode& ec) {
                                 expectEmpty(manager.GetDatasetInfoByModelingId("m-1", ec));
                                 return false;
                             }};
    read.frame = L"orlo::ProjectManager::GetDatasetInfoByModelingId";
    read.goodAnswer = R"({"data":[)" + std::string(dataset) + "]}";
    expectFailuresOf(read, server, log);
}

TEST_F(DatasetInfoWireTest, listsTheDatasetsOfAFolderInOrderWithoutTheirModelingIds)
{
    server.expect("GET", "/dataset/byfolder?folderId=f-1")
        .times(2)
        .reply(200, "[" + std::string(dataset) + R"(,{"id":"d-2","type":"zok"},{"id":"d-3","type":"图纸"}])");
    const auto infos = manager.GetDatasetInfosInFolder(L"f-1", error);
    expectClear(error);
    ASSERT_EQ(infos.size(), 3u);
    EXPECT_EQ(infos[0]->id, "d-1");
    EXPECT_EQ(infos[0]->modelingDatasetId, "");
    EXPECT_EQ(infos[0]->name, L"图纸");
    EXPECT_EQ(static_cast<int>(infos[0]->type), 1);
    EXPECT_EQ(infos[0]->teamId, L"t");
    EXPECT_EQ(infos[1]->id, "d-2");
    EXPECT_EQ(static_cast<int>(infos[1]->type), 2);
    EXPECT_EQ(infos[2]->id, "d-3");
    EXPECT_EQ(static_cast<int>(infos[2]->type), 0);
    EXPECT_EQ(manager.GetDatasetInfosInFolder(L"f-1").size(), 3u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetInfoWireTest, aFolderWithoutDatasetsIsAnEmptyListAndNoError)
{
    for (const char* body : {"[]", "{}", "null", "", R"({"data":[{"id":"d-1"}]})"}) {
        server.expect("GET", "/dataset/byfolder?folderId=f-1").reply(200, body);
        EXPECT_TRUE(manager.GetDatasetInfosInFolder(L"f-1", error).empty()) << body;
        expectClear(error);
    }
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetInfoWireTest, theListingOfAFolderFailsAsEveryDirectCallDoes)
{
    RequestingOperation listing{"GET", "/dataset/byfolder?folderId=f-1", "", L"OrloWebService::GetDataSetsByFolder - code:",
                                [&](ErrorCode& ec) { return !manager.GetDatasetInfosInFolder(L"f-1", ec).empty(); }};
    listing.frame = L"orlo::ProjectManager::GetDatasetInfosInFolder";
    listing.goodAnswer = "[" + std::string(dataset) + "]";
    expectFailuresOf(listing, server, log);
}

} // namespace
} // namespace orlo::test
