#include "support/TransferTestSupport.h"

#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo::test {
namespace {

class DrawingBindingTest : public WireTest
{
protected:
    bool bind() { return IFileManager::CreateFileDatasetRelationship("ds-1", 3, "图纸-1", 4, error); }
    bool query() { return IFileManager::QueryFileRelatedDatasets("dwg-1", 4, found, error); }

    Expectation& expectBinding()
    {
        return server.expect("POST", "/dataset/dwg/binding")
            .body(R"({"datasetId":"ds-1","datasetVersion":3,"dwgId":"图纸-1","dwgVersion":4})");
    }
    Expectation& expectQuery() { return server.expect("GET", "/dwg/dwg-1/version/4/bind-info"); }

    std::vector<RelatedDatasetInfo> found;
};

TEST_F(DrawingBindingTest, bindsWithTheMembersInOrder)
{
    expectBinding().reply(200, "");
    EXPECT_TRUE(bind());
    expectQuiet();
}

TEST_F(DrawingBindingTest, bindingNeedsNothingButTheStatus)
{
    expectBinding().reply(200, R"({"code":7})");
    EXPECT_TRUE(bind());
}

TEST_F(DrawingBindingTest, aRefusedBindingIsLoggedWithThePlatformsWords)
{
    expectBinding().reply(404, R"({"message":"没有"})");
    EXPECT_FALSE(bind());
    EXPECT_EQ(log.lines(), Lines{LR"(E [ORLOSDK]OrloWebService::CreateFileDatasetRelationship - code:404 message: {"message":"没有"})"});
    expectHttpError(error, errorStatusValue, L"HttpError", LR"({"message":"没有"})", 404);
}

TEST_F(DrawingBindingTest, aBindingIsRetried)
{
    expectBinding().reply(503, "");
    expectBinding().reply(200, "");
    EXPECT_TRUE(bind());
    expectClear(error);
}

TEST_F(DrawingBindingTest, listsTheLinkedDatasetsAndTheMainOneLast)
{
    expectQuery().reply(
        200, R"({"code":10000,"data":{"mainDataset":{"datasetId":"m","datasetName":"主","datasetVersion":9,"displayVersion":"V9"},)"
             R"("linkedDatasets":[{"datasetId":"a","datasetName":"A","datasetVersion":1,"displayVersion":"V1"},{"datasetId":"b"}]}})");
    ASSERT_TRUE(query());
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].datasetId, L"a");
    EXPECT_EQ(found[0].datasetName, L"A");
    EXPECT_EQ(found[0].datasetVersion, 1);
    EXPECT_EQ(found[0].displayVersion, L"V1");
    EXPECT_EQ(found[1].datasetId, L"b");
    EXPECT_EQ(found[1].datasetName, L"");
    EXPECT_EQ(found[1].datasetVersion, 0);
    EXPECT_EQ(found[2].datasetId, L"m");
    EXPECT_EQ(found[2].datasetName, L"主");
    EXPECT_EQ(found[2].displayVersion, L"V9");
    EXPECT_EQ(found[2].reserved, 0);
}

TEST_F(DrawingBindingTest, appendsToAListThatHoldsRecords)
{
    found.push_back({L"earlier", L"", 1, L"", 0});
    expectQuery().reply(200, R"({"code":10000,"data":{"linkedDatasets":[{"datasetId":"a"}]}})");
    ASSERT_TRUE(query());
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].datasetId, L"earlier");
    EXPECT_EQ(found[1].datasetId, L"a");
}

TEST_F(DrawingBindingTest, fieldsOfAnotherTypeKeepTheirDefaults)
{
    expectQuery().reply(
        200, R"({"code":10000,"data":{"mainDataset":{"datasetId":7,"datasetName":null,"datasetVersion":"9","displayVersion":[]}}})");
    ASSERT_TRUE(query());
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].datasetId, L"");
    EXPECT_EQ(found[0].datasetName, L"");
    EXPECT_EQ(found[0].datasetVersion, 0);
    EXPECT_EQ(found[0].displayVersion, L"");
}

TEST_F(DrawingBindingTest, anAnswerThatNamesNoDatasetIsASuccess)
{
    for (const char* data : {"{}", "null", "[]", R"({"linkedDatasets":{},"mainDataset":null})"}) {
        expectQuery().reply(200, std::string(R"({"code":10000,"data":)") + data + "}");
        EXPECT_TRUE(query()) << data;
        EXPECT_EQ(found.size(), 0U) << data;
    }
}

TEST_F(DrawingBindingTest, anAnswerWithoutTheMarkIsNotNormal)
{
    expectQuery().reply(200, R"({"code":7,"data":{"mainDataset":{}}})");
    EXPECT_FALSE(query());
    EXPECT_EQ(found.size(), 0U);
    EXPECT_EQ(
        log.lines(),
        Lines{LR"(E [ORLOSDK]OrloWebService::QueryFileRelatedDatasets - response is not normal: {"code":7,"data":{"mainDataset":{}}})"});
}

TEST_F(DrawingBindingTest, aRefusedQueryIsLoggedWithThePlatformsWords)
{
    expectQuery().reply(403, "no");
    EXPECT_FALSE(query());
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::QueryFileRelatedDatasets - code:403 message: no"});
}

TEST_F(DrawingBindingTest, aQueryWhoseAnswerIsNoJsonFails)
{
    expectQuery().reply(200, "garbage");
    EXPECT_FALSE(query());
    EXPECT_EQ(error.GetValue(), exceptionValue);
}

class FileDeletionTest : public WireTest
{};

TEST_F(FileDeletionTest, deletesAFileOfAProject)
{
    server.expect("DELETE", "/projects/p-1/files/f-1").header("Authorization", "Bearer token-secret-1").reply(200, "");
    EXPECT_TRUE(OrloWebService::DeleteFileByFileId(error, L"p-1", L"f-1"));
    expectClear(error);
}

TEST_F(FileDeletionTest, refusesAnEmptyIdAndSendsNothing)
{
    for (const auto& [project, file] : {std::pair(L"", L"f-1"), std::pair(L"p-1", L""), std::pair(L"", L"")}) {
        EXPECT_FALSE(OrloWebService::DeleteFileByFileId(error, project, file));
        expectGenericError(error, 3892314117, L"ParameterError", L"projectId or fileId is empty.");
        error.Clear();
    }
}

TEST_F(FileDeletionTest, anyOtherStatusIsAFailureThatIsNotRetried)
{
    for (const int status : {201, 204, 404, 503}) {
        log.clear();
        error.Clear();
        server.expect("DELETE", "/projects/p-1/files/f-1").reply(status, "");
        EXPECT_FALSE(OrloWebService::DeleteFileByFileId(error, L"p-1", L"f-1"));
        EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK]OrloWebService::DeleteFileByFileId - code:" + std::to_wstring(status)});
    }
}

TEST_F(FileDeletionTest, aTransportFailureComesWithItsCodeAndNoLogLine)
{
    server.expect("DELETE", "/projects/p-1/files/f-1").reset();
    EXPECT_FALSE(OrloWebService::DeleteFileByFileId(error, L"p-1", L"f-1"));
    expectHttpError(error, exceptionValue, L"generic exception", resetBy(server.url()), resetCode);
    EXPECT_EQ(log.lines(), Lines{});
}

} // namespace
} // namespace orlo::test
