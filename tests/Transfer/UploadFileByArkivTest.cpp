#include "CollaborationTest.h"

namespace orlo::test {
namespace {

class UploadFileByArkivTest : public CollaborationTest
{
protected:
    FilePtr upload(const std::wstring& path) { return manager().UploadFileByArkiv(L"f-1", path, error); }
    FilePtr upload() { return upload(file); }

    Expectation& expectVersion(const std::string& body = R"({"length":5,"version":2})")
    {
        return platform.expect("PUT", "/dataset/d-9/doc/version?sourceFile=file-7").body(body);
    }
    /// The upload alone, after which nothing is sent.
    void expectFailedUpload(const FilePtr& result)
    {
        EXPECT_EQ(result, nullptr);
        platform.verify();
        EXPECT_EQ(problems().back(), noUploadWords);
        EXPECT_EQ(log.count(noUploadWords), 1u);
    }
};

TEST_F(UploadFileByArkivTest, uploadsThenMakesADatasetThenItsVersionOfTheDocument)
{
    expectAuthorityByArkiv().header("Authorization", "Bearer token-secret-1").reply(200, goodAuthorityByArkiv());
    expectPut().withoutHeader("Authorization").reply(200, R"({"code":10000,"data":{"fileId":"file-7","versionIndex":2,"length":5}})");
    expectDataset();
    expectVersion()
        .header("Content-Type", "application/json")
        .reply(200, R"({"code":10000,"data":{"id":31,"version":1,"dataSetId":"other","size":5}})");
    expectFile(upload(), "d-9", 1, 5);
    expectClear(error);
    EXPECT_EQ(problems(), Lines{});
}

TEST_F(UploadFileByArkivTest, aFileWithoutAVersionIndexSendsMinusOne)
{
    expectUploadByArkiv(R"({"fileId":"file-7","length":5})");
    expectDataset();
    expectVersion(R"({"length":5,"version":-1})").reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);
}

TEST_F(UploadFileByArkivTest, aFileWithoutALengthSendsZero)
{
    expectUploadByArkiv(R"({"fileId":"file-7","versionIndex":2})");
    expectDataset();
    expectVersion(R"({"length":0,"version":2})").reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);
}

TEST_F(UploadFileByArkivTest, lengthsBeyondThirtyTwoBitsGoThrough)
{
    expectUploadByArkiv(R"({"fileId":"file-7","versionIndex":2,"length":5000000000})");
    expectDataset();
    expectVersion(R"({"length":5000000000,"version":2})").reply(200, R"({"version":1,"size":5000000000})");
    expectFile(upload(), "d-9", 1, 5000000000);
}

TEST_F(UploadFileByArkivTest, theFileIdIsEncodedAsASource)
{
    expectUploadByArkiv(R"({"fileId":"文 7&8","versionIndex":2,"length":5})");
    expectDataset();
    platform.expect("PUT", "/dataset/d-9/doc/version?sourceFile=%E6%96%87%207%268")
        .body(R"({"length":5,"version":2})")
        .reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);
}

TEST_F(UploadFileByArkivTest, aBarePathIsAFailedUpload)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(200, "", "");
    expectFailedUpload(upload());
    expectClear(error);
}

TEST_F(UploadFileByArkivTest, aBarePathThatReadsAsJsonIsAFailedUploadToo)
{
    for (const char* path : {"17", "null", "[1]", "true"}) {
        log.clear();
        expectAuthorityByArkiv().reply(200, R"({"data":)" + authority(path, platform.url() + "/store/1?sig=abc") + "}");
        expectPut().reply(200, "", "");
        expectFailedUpload(upload());
    }
}

TEST_F(UploadFileByArkivTest, aFileWithoutAnIdOrWithANegativeLengthIsAFailedUpload)
{
    for (const char* told : {"{}", R"({"versionIndex":2,"length":5})", R"({"fileId":"","length":5})", R"({"fileId":7,"length":5})",
                             R"({"fileId":"file-7","length":-1})"}) {
        log.clear();
        expectUploadByArkiv(told);
        expectFailedUpload(upload());
        expectClear(error);
    }
}

TEST_F(UploadFileByArkivTest, aRefusedAuthorityIsAFailedUpload)
{
    expectAuthorityByArkiv().reply(403, "not you");
    expectFailedUpload(upload());
    expectHttpError(error, errorStatusValue, L"HttpError", L"not you", 403);
}

TEST_F(UploadFileByArkivTest, aRefusedPutIsAFailedUpload)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(403, "signature expired");
    expectFailedUpload(upload());
    expectHttpError(error, errorStatusValue, L"HttpError", L"signature expired", 403);
}

TEST_F(UploadFileByArkivTest, aRefusedPutIsAFailedUploadEvenIfItsWordsReadLikeAResult)
{
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().reply(403, R"({"fileId":"file-7","versionIndex":2,"length":5})");
    expectFailedUpload(upload());
}

TEST_F(UploadFileByArkivTest, aFileThatCanNotBeReadIsAFailedUploadAndNothingIsSent)
{
    for (const std::wstring& path : {std::wstring(), wideLocalPath("gone"), localFile("empty", "")}) {
        log.clear();
        EXPECT_EQ(upload(path), nullptr);
        EXPECT_EQ(problems(), Lines{noUploadWords});
        expectClear(error);
    }
    EXPECT_EQ(platform.requestCount(), 0u);
}

TEST_F(UploadFileByArkivTest, aFailedDatasetIsToldInTheWordsOfAnUploadAndLeavesTheDocument)
{
    expectFailuresOf({"POST", "/v2/dataSets",
                      R"({"name":"plan.dwg","ownerId":"","specialtyId":"","folderId":"f-1","teamId":"","type":"dwg"})", noDatasetWords,
                      [this] { expectUploadByArkiv(); }, [this] { return upload(); }});
}

TEST_F(UploadFileByArkivTest, aFailedVersionLeavesTheNewDatasetWithoutOne)
{
    expectFailuresOf({"PUT", "/dataset/d-9/doc/version?sourceFile=file-7", R"({"length":5,"version":2})", noVersionWords,
                      [this] {
                          expectUploadByArkiv();
                          expectDataset();
                      },
                      [this] { return upload(); }});
}

TEST_F(UploadFileByArkivTest, aDatasetWithoutAnIdGetsNoVersion)
{
    expectUploadByArkiv();
    platform.expect("POST", "/v2/dataSets").anyBody().reply(200, R"({"code":10000,"data":{"name":"plan.dwg"}})");
    EXPECT_EQ(upload(), nullptr);
    expectGenericError(error, badInputValue, L"GenericError", L"data.dataSetId is empty.");
    EXPECT_EQ(problems(), Lines{noVersionWords});
}

TEST_F(UploadFileByArkivTest, eachRequestIsRepeatedForItself)
{
    expectAuthorityByArkiv().times(2).reply(503, "");
    expectAuthorityByArkiv().reply(200, goodAuthorityByArkiv());
    expectPut().times(3).reply(503, "");
    expectPut().reply(200, R"({"data":{"fileId":"file-7","versionIndex":2,"length":5}})");
    platform.expect("POST", "/v2/dataSets").anyBody().times(2).reply(503, "");
    expectDataset();
    expectVersion().times(2).reset();
    expectVersion().reply(200, R"({"version":1})");
    expectFile(upload(), "d-9", 1, 0);
    platform.verify();
    expectClear(error);
}

TEST_F(UploadFileByArkivTest, anEarlierErrorIsLoggedUnderItsOwnName)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"earlier"));
    EXPECT_EQ(upload(L""), nullptr);
    EXPECT_EQ(problems().front(), L"E@orlo::CollaborationFileManager::UploadFileByArkiv 传入的ErrorCode，已有错误存在:earlier");
}

} // namespace
} // namespace orlo::test
