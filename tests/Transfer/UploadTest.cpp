#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <regex>

namespace orlo::test {
namespace {

class UploadTest : public TransferTest
{
protected:
    PromiseData upload(const std::wstring& path) { return outcomeOf(HttpClient::uploadFile(error, path, L"plan.dwg", L"remote", false)); }

    Expectation& expectAuthority() { return platform.expect("PUT", "/file/new?fileName=plan.dwg&filepath=remote"); }

    void authorityGives(const std::string& address) { expectAuthority().reply(200, authority("remote/plan.dwg", address)); }

    const std::wstring file = localFile("plan.dwg", "bytes of a plan");
};

TEST_F(UploadTest, asksForAnAddressAndSendsTheBytesThere)
{
    expectAuthority()
        .header("Authorization", "Bearer token-secret-1")
        .header("Content-Length", "0")
        .reply(200, authority("remote/plan.dwg", atStore("/blobs/1?sig=abc")));
    store.expect("PUT", "/blobs/1?sig=abc").body("bytes of a plan").reply(200, R"({"data":{"fileId":"f-1","versionIndex":3,"length":15}})");
    expectOutcome(upload(file), true, 200, LR"({"remoteFilePath":"remote/plan.dwg","fileId":"f-1","versionIndex":3,"length":15})");
    expectClear(error);
}

TEST_F(UploadTest, sendsNoContentTypeNoTokenAndNoEncodingToTheSignedAddress)
{
    authorityGives(atStore("/blobs/1?sig=abc"));
    store.expect("PUT", "/blobs/1?sig=abc")
        .anyBody()
        .header("Content-Type", "")
        .header("Content-Length", "15")
        .withoutHeader("Authorization")
        .withoutHeader("Content-Encoding")
        .withoutHeader("Transfer-Encoding")
        .withoutHeader("Expect");
    EXPECT_TRUE(upload(file).success);
    EXPECT_EQ(store.requests().at(0).hasHeader("Content-Type"), true);
}

TEST_F(UploadTest, logsItsStepsInOrder)
{
    authorityGives(atStore("/blobs/1?sig=abc"));
    store.expect("PUT", "/blobs/1?sig=abc").anyBody();
    upload(file);
    const std::wregex end(LR"(I \[ORLOSDK\]L"END TO PutFile\." --- time costing:\d+ ms\.)");
    ASSERT_TRUE(waitUntil([&] { return log.lines().size() == 6; }));
    const Lines lines = log.lines();
    EXPECT_EQ(lines[0], L"I [ORLOSDK]OrloWebService::LogRequest - PUT /file/new at 127.0.0.1/");
    EXPECT_EQ(lines[1], L"I [ORLOSDK]OrloWebService::LogResponse - PUT /file/new - status:200");
    EXPECT_EQ(lines[2], L"I [ORLOSDK]BEGIN TO PutFileAsync.");
    EXPECT_EQ(lines[3], L"I [ORLOSDK]OrloWebService::LogRequest - PUT / at 127.0.0.1/blobs/1");
    EXPECT_EQ(lines[4], L"I [ORLOSDK]OrloWebService::LogResponse - PUT / - status:200");
    EXPECT_TRUE(std::regex_match(lines[5], end)) << utils::toString(lines[5]);
}

TEST_F(UploadTest, namesTheFileAndItsFolderWhereTheCallerDoesNot)
{
    host.change([&](OrloConfig& config) { config.defaultRemoteFolder = L"store/共享"; });
    const std::wstring chinese = localFile("平面图 1.dwg", "x");
    platform.expect("PUT", "/file/new?fileName=%E5%B9%B3%E9%9D%A2%E5%9B%BE%201.dwg&filepath=store/%E5%85%B1%E4%BA%AB/account-1")
        .reply(200, authority("r/1", atStore("/b")));
    store.expect("PUT", "/b").body("x");
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFile(error, chinese, L"", L"", false)).success);
}

TEST_F(UploadTest, goesToTheFolderOfAnonymousWhenNobodyIsSignedIn)
{
    UserSession::SignOut();
    platform.expect("PUT", "/file/new?fileName=plan.dwg&filepath=/anonymous")
        .withoutHeader("Authorization")
        .reply(200, authority("r/1", atStore("/b")));
    store.expect("PUT", "/b").anyBody();
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFile(error, file, L"plan.dwg", L"", false)).success);
}

TEST_F(UploadTest, encodesWhatTheQueryCanNotHold)
{
    platform.expect("PUT", "/file/new?fileName=a%2Bb%26c%3Dd%25.dwg&filepath=x?y%23z").reply(200, authority("r", atStore("/b")));
    store.expect("PUT", "/b").anyBody();
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFile(error, file, L"a+b&c=d%.dwg", L"x?y#z", false)).success);
}

TEST_F(UploadTest, sendsAFileOfManyMegabytesWhole)
{
    const std::string content = patterned(9 * 1024 * 1024 + 7);
    authorityGives(atStore("/b"));
    store.expect("PUT", "/b").body(content).header("Content-Length", "9437191");
    EXPECT_TRUE(upload(localFile("large.bin", content)).success);
}

TEST_F(UploadTest, sendsAFileWithAPathOfMoreThan260Characters)
{
    const std::string folder = std::string(100, 'a') + "/" + std::string(100, 'b') + "/" + std::string(100, 'c');
    authorityGives(atStore("/b"));
    store.expect("PUT", "/b").body("far away");
    EXPECT_TRUE(upload(localFile(folder + "/" + std::string(100, 'd') + ".dwg", "far away")).success);
}

TEST_F(UploadTest, refusesAPathWithoutAFileAndSendsNothing)
{
    expectOutcome(upload(wideLocalPath("missing.dwg")), false, 400, L"invalid file path");
    expectOutcome(upload(L""), false, 400, L"invalid file path");
    expectOutcome(upload(host.folder().wide()), false, 400, L"invalid file path");
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(UploadTest, refusesAFileThatCanNotBeRead)
{
    // A regular file whose first bytes no process can read.
    expectOutcome(upload(L"/proc/self/mem"), false, 400, L"read file fail");
    expectClear(error);
}

TEST_F(UploadTest, refusesAFileOfZeroBytesAndSendsNothing)
{
    expectOutcome(upload(localFile("empty.dwg", "")), false, 400, L"invalid file content");
    expectClear(error);
}

TEST_F(UploadTest, aRefusedInputLeavesAnEarlierErrorAlone)
{
    error.Assign(badInputValue, std::make_shared<GenericError>(L"earlier"));
    upload(L"");
    expectGenericError(error, badInputValue, L"GenericError", L"earlier");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::HttpClient::uploadFile 传入的ErrorCode，已有错误存在:earlier"});
}

TEST_F(UploadTest, leavesTheLocalFileAsItIs)
{
    authorityGives(atStore("/b"));
    store.expect("PUT", "/b").anyBody();
    upload(file);
    EXPECT_EQ(readFile(localPath("plan.dwg")), "bytes of a plan");
    EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/plan.dwg"});
}

TEST_F(UploadTest, endsWithTheStatusWhenTheAuthorityIsRefused)
{
    for (const int status : {201, 204, 302, 401, 403, 404, 500}) {
        log.clear();
        expectAuthority().reply(status, status == 204 ? "" : R"({"message":"no"})");
        expectOutcome(upload(file), false, status, L"");
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::AcquireUploadAuthorityAsync - code:" + std::to_wstring(status)));
    }
}

TEST_F(UploadTest, leavesThePlatformsWordsInTheErrorCodeWhenTheAuthorityIsRefused)
{
    expectAuthority().reply(403, R"({"message":"no"})");
    upload(file);
    expectHttpError(error, errorStatusValue, L"HttpError", LR"({"message":"no"})", 403);
}

TEST_F(UploadTest, anAuthorityThatIsNoJsonEndsTheChainBeforeThePut)
{
    expectAuthority().reply(200, "<html>");
    const PromiseData outcome = upload(file);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_EQ(error.GetValue(), exceptionValue);
    EXPECT_EQ(store.requestCount(), 0U);
}

TEST_F(UploadTest, anAuthorityWithoutAnAddressFailsAtThePut)
{
    for (const char* reply : {"", "{}", "[]", "null", "7", R"({"fileUrlWithSAS":7})", R"({"fileUrlWithSAS":{"a":1}})"}) {
        log.clear();
        expectAuthority().reply(200, reply);
        const PromiseData outcome = upload(file);
        EXPECT_FALSE(outcome.success) << reply;
        EXPECT_EQ(outcome.status, 5555) << reply;
        EXPECT_TRUE(log.has(L"I [ORLOSDK]BEGIN TO PutFileAsync.")) << reply;
    }
    EXPECT_EQ(store.requestCount(), 0U);
}

TEST_F(UploadTest, endsWithTheErrorsTextWhenThePutIsRefused)
{
    for (const int status : {400, 403, 404, 412, 500, 503}) {
        log.clear();
        authorityGives(atStore("/b?sig=abc"));
        store.expect("PUT", "/b?sig=abc").anyBody().reply(status, "<Error>说不</Error>", "application/xml");
        expectOutcome(upload(file), false, status, L"<Error>说不</Error>");
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::PutFileAsync - code:" + std::to_wstring(status)));
        expectHttpError(error, errorStatusValue, L"HttpError", L"<Error>说不</Error>", status);
    }
}

TEST_F(UploadTest, anyStatusOfThePutButTwoHundredIsAFailure)
{
    for (const int status : {201, 202, 204, 304}) {
        authorityGives(atStore("/b"));
        store.expect("PUT", "/b").anyBody().reply(status, "");
        expectOutcome(upload(file), false, status, L"");
        expectClear(error);
    }
}

TEST_F(UploadTest, followsNoRedirect)
{
    Reply redirect;
    redirect.status = 307;
    redirect.headers.emplace_back("Location", platform.url() + "/elsewhere");
    authorityGives(atStore("/b"));
    store.expect("PUT", "/b").anyBody().reply(redirect);
    expectOutcome(upload(file), false, 307, L"");
}

TEST_F(UploadTest, aStoreThatAnswersNoJsonGivesTheBareRemotePath)
{
    for (const char* type : {"", "text/plain", "application/json", "text/html; charset=latin-1"}) {
        authorityGives(atStore("/b"));
        store.expect("PUT", "/b").anyBody().reply(200, "created", type);
        expectOutcome(upload(file), true, 200, L"remote/plan.dwg");
    }
}

TEST_F(UploadTest, aStoreThatAnswersJsonWhichCannotBeReadGivesTheBareRemotePath)
{
    const std::string deep(1000, '[');
    for (const std::string& answer :
         {std::string(R"(["\ud800\u0041"])"), std::string(R"(["\ud800"])"), std::string(R"(["\udc00"])"), std::string("[1] \xF0"),
          std::string("[\"\xE6\x96"), std::string("[1e999]"), std::string("[1.11111111111111111111E-335]"), std::string("[0e67]"), deep}) {
        authorityGives(atStore("/b"));
        store.expect("PUT", "/b").anyBody().reply(200, answer);
        expectOutcome(upload(file), true, 200, L"remote/plan.dwg");
    }
}

TEST_F(UploadTest, aStoreThatAnswersNothingGivesTheBareRemotePath)
{
    authorityGives(atStore("/b"));
    store.expect("PUT", "/b").anyBody().reply(200, "", "");
    expectOutcome(upload(file), true, 200, L"remote/plan.dwg");
}

TEST_F(UploadTest, aRemotePathInChineseComesBackAsItIs)
{
    expectAuthority().reply(200, authority("项目/平面图\xF0\x9F\x8F\xA0.dwg", atStore("/b")));
    store.expect("PUT", "/b").anyBody().reply(200, "", "");
    expectOutcome(upload(file), true, 200, L"项目/平面图\U0001F3E0.dwg");
}

TEST_F(UploadTest, withoutAServiceAddressItFailsInsideTheChain)
{
    OrloConfigManager::Configure({});
    const PromiseData outcome = upload(file);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_EQ(error.GetValue(), exceptionValue);
}

} // namespace
} // namespace orlo::test
