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

void expectEmpty(const DatasetInfo& info)
{
    EXPECT_EQ(info.id, "");
    EXPECT_EQ(info.modelingDatasetId, "");
    EXPECT_EQ(info.name, L"");
    EXPECT_EQ(static_cast<int>(info.type), 0);
    EXPECT_EQ(info.projectId, L"");
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

TEST_F(DatasetInfoWireTest, anErrorStatusIsNotRetried)
{
    server.expect("GET", "/v2/dataSets/d-1").reply(503, "busy");
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    expectHttpError(error, -402653182, L"HttpError", L"busy", 503);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetDatasetInfo - code:503"});
}

TEST_F(DatasetInfoWireTest, aTransportFailureKeepsItsCodeAndIsNeitherLoggedNorRetried)
{
    server.expect("GET", "/v2/dataSets/d-1").reset();
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    EXPECT_EQ(server.requestCount(), 1u);
    expectHttpError(error, 3892314114, L"generic exception", resetBy(server.url()), 104);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DatasetInfoWireTest, aBodyThatIsNoJsonIsAnExceptionOfTheFrame)
{
    server.expect("GET", "/v2/dataSets/d-1").reply(200, "<html>");
    expectEmpty(manager.GetDatasetInfo("d-1", error));
    EXPECT_EQ(error.GetValue(), 3892314114);
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    ASSERT_NE(failure, nullptr);
    EXPECT_EQ(failure->GetName(), L"HttpError");
    EXPECT_EQ(failure->GetCode(), 5555);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ProjectManager::GetDatasetInfo [END_API_IMPLEMENTATION][A generic exception caught] message[" +
                                 error.GetErrorMessage() + L"]"});
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
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{});
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

TEST_F(DatasetInfoWireTest, aFailedReadByModelingIdIsLoggedUnderSharedWordsAndNotRetried)
{
    server.expect("POST", "/dataset/modelingid").body(R"(["m-1"])").reply(500, "busy");
    expectEmpty(manager.GetDatasetInfoByModelingId("m-1", error));
    expectHttpError(error, -402653182, L"HttpError", L"busy", 500);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::getProjectIdByModelingId - code:500"});
}

TEST_F(DatasetInfoWireTest, aTransportFailureByModelingIdIsNeitherLoggedNorRetried)
{
    server.expect("POST", "/dataset/modelingid").body(R"(["m-1"])").reset();
    expectEmpty(manager.GetDatasetInfoByModelingId("m-1", error));
    expectHttpError(error, 3892314114, L"generic exception", resetBy(server.url()), 104);
    EXPECT_EQ(log.lines(), Lines{});
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

TEST_F(DatasetInfoWireTest, aFailedListingOfAFolderIsLoggedAndNotRetried)
{
    server.expect("GET", "/dataset/byfolder?folderId=f-1").reply(500, "busy");
    EXPECT_TRUE(manager.GetDatasetInfosInFolder(L"f-1", error).empty());
    expectHttpError(error, -402653182, L"HttpError", L"busy", 500);
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::GetDataSetsByFolder - code:500"});
}

TEST_F(DatasetInfoWireTest, aTransportFailureOfAFolderIsNeitherLoggedNorRetried)
{
    server.expect("GET", "/dataset/byfolder?folderId=f-1").reset();
    EXPECT_TRUE(manager.GetDatasetInfosInFolder(L"f-1", error).empty());
    expectHttpError(error, 3892314114, L"generic exception", resetBy(server.url()), 104);
    EXPECT_EQ(log.lines(), Lines{});
}

} // namespace
} // namespace orlo::test
