#include "support/TransferTestSupport.h"

namespace orlo::test {
namespace {

class UploadByArkivTest : public TransferTest
{
protected:
    PromiseData upload() { return outcomeOf(HttpClient::uploadFileByArkiv(error, file, L"folder 7", L"plan.dwg", L"remote", false)); }

    Expectation& expectAuthority()
    {
        return platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=plan.dwg&filepath=remote&targetFolderId=folder%207");
    }

    const std::wstring file = localFile("plan.dwg", "bytes");
};

TEST_F(UploadByArkivTest, readsTheAuthorityOutOfTheEnvelope)
{
    expectAuthority()
        .header("Authorization", "Bearer token-secret-1")
        .reply(200, R"({"code":10000,"data":)" + authority("doc/plan.dwg", atStore("/b?sig=1")) + "}");
    store.expect("PUT", "/b?sig=1").body("bytes").header("Content-Type", "").reply(200, R"({"data":{"fileId":"f-1"}})");
    expectOutcome(upload(), true, 200, LR"({"remoteFilePath":"doc/plan.dwg","fileId":"f-1"})");
    expectClear(error);
}

TEST_F(UploadByArkivTest, looksAtTheDataAndNotAtTheCode)
{
    expectAuthority().reply(200, R"({"code":7,"data":)" + authority("doc/plan.dwg", atStore("/b")) + "}");
    store.expect("PUT", "/b").body("bytes").reply(200, "", "");
    expectOutcome(upload(), true, 200, L"doc/plan.dwg");
}

TEST_F(UploadByArkivTest, takesTheWholeBodyWhereDataIsNoObject)
{
    expectAuthority().reply(200, R"({"data":"x","fileOSSPath":"p","fileUrlWithSAS":")" + atStore("/b") + R"("})");
    store.expect("PUT", "/b").body("bytes").reply(200, "", "");
    expectOutcome(upload(), true, 200, L"p");
}

TEST_F(UploadByArkivTest, anAuthorityThatCanNotBeReadASecondTimeIsLoggedAndGivesNoAddress)
{
    expectAuthority().reply(200, R"({"huge":1e999,"data":)" + authority("doc/plan.dwg", atStore("/b")) + "}");
    const PromiseData outcome = upload();
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_TRUE(log.has(L"E [ORLOSDK] catch value::parse(all_data) error"));
    EXPECT_EQ(store.requestCount(), 0U);
}

TEST_F(UploadByArkivTest, endsWithTheStatusWhenTheAuthorityIsRefused)
{
    expectAuthority().reply(404, "gone");
    expectOutcome(upload(), false, 404, L"");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::AcquireUploadAuthorityAsync - code:404"));
    expectHttpError(error, errorStatusValue, L"HttpError", L"gone", 404);
}

TEST_F(UploadByArkivTest, refusesTheSameInputs)
{
    const auto refused = [this](const std::wstring& path) {
        return outcomeOf(HttpClient::uploadFileByArkiv(error, path, L"folder", L"", L"", false));
    };
    expectOutcome(refused(L""), false, 400, L"invalid file path");
    expectOutcome(refused(L"/proc/self/mem"), false, 400, L"read file fail");
    expectOutcome(refused(localFile("empty", "")), false, 400, L"invalid file content");
    expectClear(error);
}

TEST_F(UploadByArkivTest, namesTheFileAndItsFolderWhereTheCallerDoesNot)
{
    platform.expect("GET", "/file/doc/upload/url/with/filename?fileName=plan.dwg&filepath=/account-1&targetFolderId=")
        .reply(200, R"({"data":)" + authority("p", atStore("/b")) + "}");
    store.expect("PUT", "/b").body("bytes");
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFileByArkiv(error, file, L"", L"", L"", false)).success);
}

TEST_F(UploadByArkivTest, sendsCompressedBytesWhenAskedTo)
{
    expectAuthority().reply(200, R"({"data":)" + authority("p", atStore("/b")) + "}");
    store.expect("PUT", "/b").anyBody().header("Content-Encoding", "gzip");
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFileByArkiv(error, file, L"folder 7", L"plan.dwg", L"remote", true)).success);
    EXPECT_EQ(gunzip(store.requests().at(0).body), "bytes");
}

} // namespace
} // namespace orlo::test
