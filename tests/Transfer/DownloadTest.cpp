#include "support/TransferTestSupport.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>

#include <regex>

namespace orlo::test {
namespace {

class DownloadTest : public TransferTest
{
protected:
    PromiseData download(const std::wstring& to) { return outcomeOf(HttpClient::downloadFile(L"remote/plan.dwg", to, error)); }

    Expectation& expectAuthority() { return platform.expect("POST", "/file/read").body("remote/plan.dwg"); }

    void expectFile(const Reply& reply)
    {
        expectAuthority().reply(200, authority("x", atStore("/b?sig=1")));
        store.expect("GET", "/b?sig=1").reply(reply);
    }

    void expectFailure(const Reply& reply, int status, const std::wstring& message)
    {
        expectFile(reply);
        expectOutcome(download(target), false, status, message);
        EXPECT_FALSE(std::filesystem::exists(localPath("plan.dwg")));
    }

    const std::wstring target = wideLocalPath("plan.dwg");
};

TEST_F(DownloadTest, asksForAnAddressAndWritesTheFile)
{
    expectAuthority()
        .header("Authorization", "Bearer token-secret-1")
        .header("Content-Type", "text/plain; charset=utf-8")
        .reply(200, authority("x", atStore("/b?sig=1")));
    const std::string content = patterned(3 << 20);
    store.expect("GET", "/b?sig=1")
        .withoutHeader("Authorization")
        .header("Content-Type", "")
        .header("Accept-Encoding", "gzip")
        .reply(fileReply(content));
    expectOutcome(download(target), true, 200, target);
    EXPECT_TRUE(readFile(localPath("plan.dwg")) == content);
    EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/plan.dwg"});
    expectClear(error);
}

TEST_F(DownloadTest, aFileThatCanNotStandAtItsPathIsNoSuccess)
{
    std::filesystem::create_directories(localPath("plan.dwg/inner"));
    const std::wstring longName = wideLocalPath(std::string(300, 'n'));
    for (const std::wstring& path : {target, longName, target + L"/none/plan.dwg"}) {
        expectFile(fileReply("bytes"));
        const PromiseData outcome = download(path);
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, 200);
        EXPECT_FALSE(utils::fileExists(path));
    }
}

TEST_F(DownloadTest, aLocalPathWithANulIsRefusedBeforeAnyRequest)
{
    writeFile(localPath("plan.dwg"), "untouched");
    const std::wstring cut = target + std::wstring(1, L'\0') + L".dwg";
    expectOutcome(download(cut), false, 400, L"invalid file path");
    expectOutcome(outcomeOf(HttpClient::DownloadFileByArkiv(L"f-1", 1, cut, error)), false, 400, L"invalid file path");
    expectOutcome(outcomeOf(HttpClient::downloadModuleFile(L"{}", cut, L"", L"", L"", error)), false, 400, L"invalid file path");
    expectOutcome(outcomeOf(HttpClient::uploadFile(error, cut, L"", L"", false)), false, 400, L"invalid file path");
    EXPECT_EQ(platform.requestCount(), 0U);
    EXPECT_EQ(readFile(localPath("plan.dwg")), "untouched");
}

TEST_F(DownloadTest, logsItsStepsInOrder)
{
    expectFile(fileReply("bytes"));
    download(target);
    const std::wregex end(LR"(I \[ORLOSDK\]L"END TO GetFileAsync\." --- time costing:\d+ ms\.)");
    ASSERT_TRUE(waitUntil([&] { return log.lines().size() == 6; }));
    const Lines lines = log.lines();
    EXPECT_EQ(lines[0], L"I [ORLOSDK]OrloWebService::LogRequest - POST /file/read at 127.0.0.1/");
    EXPECT_EQ(lines[1], L"I [ORLOSDK]OrloWebService::LogResponse - POST /file/read - status:200");
    EXPECT_EQ(lines[2], L"I [ORLOSDK]BEGIN TO GetFileAsync.");
    EXPECT_EQ(lines[3], L"I [ORLOSDK]OrloWebService::LogRequest - GET / at 127.0.0.1/b");
    EXPECT_EQ(lines[4], L"I [ORLOSDK]OrloWebService::LogResponse - GET / - status:200");
    EXPECT_TRUE(std::regex_match(lines[5], end)) << utils::toString(lines[5]);
}

TEST_F(DownloadTest, asksForARemotePathInChineseAsPlainText)
{
    platform.expect("POST", "/file/read").body("项目/平面 图.dwg").reply(200, authority("x", atStore("/b")));
    store.expect("GET", "/b").reply(fileReply("x"));
    const std::wstring chinese = wideLocalPath("平面图.dwg");
    expectOutcome(outcomeOf(HttpClient::downloadFile(L"项目/平面 图.dwg", chinese, error)), true, 200, chinese);
    EXPECT_EQ(readFile(localPath("平面图.dwg")), "x");
}

TEST_F(DownloadTest, writesToAPathOfMoreThan260Characters)
{
    const std::string name = std::string(150, 'a') + "/" + std::string(150, 'b') + "/" + std::string(100, 'c');
    expectFile(fileReply("far"));
    EXPECT_TRUE(download(wideLocalPath(name)).success);
    EXPECT_EQ(readFile(localPath(name)), "far");
}

TEST_F(DownloadTest, anEmptyLocalPathGetsANewFileWhosePathComesBack)
{
    expectFile(fileReply("first"));
    const std::wstring first = download(L"").message;
    expectFile(fileReply("second"));
    const std::wstring second = download(L"").message;
    EXPECT_NE(first, second);
    EXPECT_EQ(readFile(utils::makePath(first)), "first");
    EXPECT_EQ(readFile(utils::makePath(second)), "second");
    EXPECT_EQ(temporaryFiles().size(), 2U);
}

TEST_F(DownloadTest, replacesAFileThatIsThere)
{
    localFile("plan.dwg", "the old and longer content");
    expectFile(fileReply("new"));
    EXPECT_TRUE(download(target).success);
    EXPECT_EQ(readFile(localPath("plan.dwg")), "new");
}

TEST_F(DownloadTest, refusesAnEmptyRemotePathAndSendsNothing)
{
    expectOutcome(outcomeOf(HttpClient::downloadFile(L"", target, error)), false, 400, L"invalid remote uri path");
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(DownloadTest, endsWithTheStatusAndNoTextWhenTheAuthorityIsRefused)
{
    for (const int status : {201, 302, 401, 404, 500}) {
        log.clear();
        expectAuthority().reply(status, "no");
        expectOutcome(download(target), false, status, L"");
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::AcquireDownloadAuthorityAsync - code:" + std::to_wstring(status)));
    }
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 500);
    EXPECT_EQ(store.requestCount(), 0U);
}

TEST_F(DownloadTest, anAuthorityThatIsNoJsonReachesThePlainHandler)
{
    expectAuthority().reply(200, "garbage");
    const PromiseData outcome = download(target);
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 5555);
    EXPECT_EQ(outcome.message, error.GetErrorMessage());
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::GetFileAsync failsAcquireDownloadAuthority"));
}

TEST_F(DownloadTest, anAuthorityWithoutAnAddressFailsAtTheFile)
{
    for (const char* reply : {"", "{}", "[]", R"({"fileUrlWithSAS":[1]})"}) {
        log.clear();
        expectAuthority().reply(200, reply);
        EXPECT_EQ(download(target).status, 5555) << reply;
        EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::GetFileAsync failsGetFile")) << reply;
    }
}

TEST_F(DownloadTest, endsWithTheErrorsTextWhenTheFileIsRefused)
{
    Reply refusal;
    refusal.status = 404;
    refusal.body = "<Error>没有</Error>";
    refusal.contentType = "application/xml";
    expectFailure(refusal, 404, L"<Error>没有</Error>");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::GetFileAsync - code:404"));
    expectHttpError(error, errorStatusValue, L"HttpError", L"<Error>没有</Error>", 404);
}

TEST_F(DownloadTest, anyStatusOfTheFileButTwoHundredIsAFailure)
{
    for (const int status : {201, 204, 206, 302}) {
        Reply reply;
        reply.status = status;
        reply.body = status == 204 ? "" : "part";
        expectFailure(reply, status, L"");
        expectClear(error);
    }
}

TEST_F(DownloadTest, anEmptyRemoteFileMakesNoFile)
{
    expectFailure(fileReply(""), 200, L"");
    expectClear(error);
}

TEST_F(DownloadTest, aStreamThatStaysCompressedIsRefused)
{
    expectFailure(fileReply("\x1F\x8B\x08"), 500, L"a_gzip_stream_extracted");
    EXPECT_TRUE(log.has(L"E [ORLOSDK][OrloWebService::GetFileAsync] It is a gzip stream but response does not have required headers"));
}

TEST_F(DownloadTest, aWholeGzipFileWithoutItsHeaderIsRefusedOnce)
{
    const RetryLimit three(3);
    expectFailure(fileReply(gzipOf("text")), 500, L"a_gzip_stream_extracted");
    expectClear(error);
}

TEST_F(DownloadTest, twoBytesThatBeginLikeGzipAreAFile)
{
    expectFile(fileReply("\x1F\x8B"));
    EXPECT_TRUE(download(target).success);
    EXPECT_EQ(readFile(localPath("plan.dwg")), "\x1F\x8B");
}

TEST_F(DownloadTest, aFailedLocalWriteEndsWithTheBodyOneCharacterForEachByte)
{
    localFile("plan.dwg/in-the-way", "a folder stands at the target");
    expectFile(fileReply("a\xE9\xFFz"));
    expectOutcome(download(target), false, 200, L"a\u00E9\u00FFz");
    expectClear(error);
    EXPECT_EQ(filesBelow(localPath("plan.dwg")), std::vector<std::string>{"in-the-way"});
    EXPECT_EQ(filesBelow(host.folder().path("Local")), std::vector<std::string>{"plan.dwg/in-the-way"});
}

TEST_F(DownloadTest, aTargetBelowAFileIsAFailedLocalWrite)
{
    localFile("file", "not a folder");
    expectFile(fileReply("bytes"));
    expectOutcome(download(host.folder().wide("Local/file/plan.dwg")), false, 200, L"bytes");
    EXPECT_EQ(readFile(localPath("file")), "not a folder");
}

TEST_F(DownloadTest, theArkivFormNamesFileAndVersion)
{
    platform.expect("POST", "/file/doc/f-1/download/url?version=7")
        .header("Content-Length", "0")
        .reply(200, R"({"code":10000,"data":)" + authority("x", atStore("/b")) + "}");
    store.expect("GET", "/b").reply(fileReply("seven"));
    expectOutcome(outcomeOf(HttpClient::DownloadFileByArkiv(L"f-1", 7, target, error)), true, 200, target);
    EXPECT_EQ(readFile(localPath("plan.dwg")), "seven");
}

TEST_F(DownloadTest, theArkivFormRefusesAnEmptyId)
{
    expectOutcome(outcomeOf(HttpClient::DownloadFileByArkiv(L"", 1, target, error)), false, 400, L"invalid fileId");
    expectClear(error);
}

TEST_F(DownloadTest, theArkivFormEndsWithTheStatus)
{
    platform.expect("POST", "/file/doc/f-1/download/url?version=1").reply(403, "no");
    expectOutcome(outcomeOf(HttpClient::DownloadFileByArkiv(L"f-1", 1, target, error)), false, 403, L"");
    EXPECT_TRUE(log.has(L"E [ORLOSDK]OrloWebService::AcquireDownloadAuthorityAsync - code:403"));
}

} // namespace
} // namespace orlo::test
