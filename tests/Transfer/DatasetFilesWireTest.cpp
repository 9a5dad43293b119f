#include "support/RawServer.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/DatasetFiles.h>

// The versions of a dataset and the way back of their files, on the wire.
namespace orlo::test {
namespace {

constexpr const char* latest = "/v2/datasets/d-1/version/latest?onlySuccess=true&mvd=base";

std::string numbered(int number)
{
    return "/v2/datasets/d-1/version/" + std::to_string(number) + "?onlySuccess=false&mvd=base";
}

std::string enveloped(const std::string& record)
{
    return R"({"code":10000,"message":"OK","data":)" + record + "}";
}

class VersionListWireTest : public WireTest
{
protected:
    std::vector<DatasetFileVersion> list() { return DatasetFiles::listVersions("d-1", error); }
    std::vector<DatasetFileVersion> list(int newest, int atMost) { return DatasetFiles::listVersions("d-1", newest, atMost, error); }

    static std::string numbersOf(const std::vector<DatasetFileVersion>& versions)
    {
        std::string all;
        for (const DatasetFileVersion& version : versions)
            all += std::to_string(version.number) + " ";
        return all;
    }

    void expectVersion(const std::string& target, int number)
    {
        server.expect("GET", target).reply(200, enveloped(R"({"version":)" + std::to_string(number) + "}"));
    }

    void expectRefusal(const std::wstring& words)
    {
        EXPECT_TRUE(list().empty());
        expectGenericError(error, badInputValue, L"GenericError", words);
        error.Clear();
    }
};

TEST_F(VersionListWireTest, tellsWhatTheRecordsTell)
{
    server.expect("GET", latest)
        .header("Authorization", "Bearer token-secret-1")
        .reply(200, enveloped(R"({"id":12,"version":2,"dataSetId":"d-1","dataSetSourceFile":"demo/1/平面 图.dwg","displayVersion":"V2",)"
                              R"("creationTime":"2026-11-22T08:00:00Z","status":"Published","size":5368709120})"));
    server.expect("GET", numbered(1)).reply(200, R"({"id":11,"version":1,"status":"WIP","dataSetSourceFile":"f-9","length":7})");
    const std::vector<DatasetFileVersion> versions = list();
    ASSERT_EQ(versions.size(), 2u);
    EXPECT_EQ(versions[0].number, 2);
    EXPECT_EQ(versions[0].id, 12);
    EXPECT_EQ(versions[0].displayVersion, L"V2");
    EXPECT_EQ(versions[0].status, L"Published");
    EXPECT_EQ(versions[0].creationTime, L"2026-11-22T08:00:00Z");
    EXPECT_EQ(versions[0].sourceFile, L"demo/1/平面 图.dwg");
    EXPECT_EQ(versions[0].size, 5368709120);
    EXPECT_EQ(versions[1].number, 1);
    EXPECT_EQ(versions[1].sourceFile, L"f-9");
    EXPECT_EQ(versions[1].size, 7);
    expectQuiet();
}

TEST_F(VersionListWireTest, leavesOutNumbersThatTheDatasetHasSkipped)
{
    expectVersion(latest, 5);
    server.expect("GET", numbered(4)).reply(404, R"({"message":"no such version"})");
    server.expect("GET", numbered(3)).reply(404, "");
    expectVersion(numbered(2), 2);
    server.expect("GET", numbered(1)).reply(404, "gone");
    EXPECT_EQ(numbersOf(list()), "5 2 ");
    expectQuiet();
}

TEST_F(VersionListWireTest, endsAtTheFirstNumberAndBelowItAtOnce)
{
    for (const int only : {1, 0}) {
        expectVersion(latest, only);
        EXPECT_EQ(numbersOf(list()), std::to_string(only) + " ");
        server.verify();
    }
    expectQuiet();
}

TEST_F(VersionListWireTest, asksForNoMoreThanItMay)
{
    expectVersion(latest, 1000000);
    server.expect("GET", numbered(999999)).reply(404, "");
    expectVersion(numbered(999998), 999998);
    EXPECT_EQ(numbersOf(list(-7, 3)), "1000000 999998 ");
    server.verify();
    expectVersion(numbered(999997), 999997);
    EXPECT_EQ(numbersOf(list(999997, 1)), "999997 ");
    expectQuiet();
}

TEST_F(VersionListWireTest, asksAHundredTimesUnlessTold)
{
    expectVersion(latest, 150);
    for (int number = 149; number > 50; --number)
        expectVersion(numbered(number), number);
    EXPECT_EQ(list().size(), 100u);
    EXPECT_EQ(DatasetFiles::usualRequests, 100);
}

TEST_F(VersionListWireTest, ofNoVersionFailsWithThePlatformsWords)
{
    server.expect("GET", latest).reply(404, "no such dataset");
    EXPECT_TRUE(list().empty());
    expectHttpError(error, errorStatusValue, L"HttpError", L"no such dataset", 404);
    server.verify();
    server.expect("GET", numbered(2)).reply(404, "two");
    server.expect("GET", numbered(1)).reply(404, "one");
    EXPECT_TRUE(list(2, 9).empty());
    expectHttpError(error, errorStatusValue, L"HttpError", L"one", 404);
}

TEST_F(VersionListWireTest, isNoneWhereANumberCanNotBeHad)
{
    expectVersion(latest, 3);
    server.expect("GET", numbered(2)).reply(401, "who");
    EXPECT_TRUE(list().empty());
    expectHttpError(error, errorStatusValue, L"HttpError", L"who", 401);
}

TEST_F(VersionListWireTest, repeatsWhatMayPass)
{
    server.expect("GET", latest).times(2).reply(503, "busy");
    expectVersion(latest, 2);
    server.expect("GET", numbered(1)).reset();
    expectVersion(numbered(1), 1);
    EXPECT_EQ(numbersOf(list()), "2 1 ");
    expectClear(error);
    server.verify();
    server.expect("GET", latest).times(4).reply(503, "busy");
    EXPECT_TRUE(list().empty());
    expectHttpError(error, errorStatusValue, L"HttpError", L"busy", 503);
}

TEST_F(VersionListWireTest, tellsABrokenTransportAndABodyThatIsNoJson)
{
    server.expect("GET", latest).times(4).reset();
    EXPECT_TRUE(list().empty());
    EXPECT_EQ(error.GetValue(), exceptionValue);
    server.verify();
    error.Clear();
    server.expect("GET", latest).reply(200, "<html>");
    EXPECT_TRUE(list().empty());
    EXPECT_EQ(error.GetValue(), exceptionValue);
}

TEST_F(VersionListWireTest, refusesAnAnswerThatIsNoVersion)
{
    for (const int status : {201, 204, 302}) {
        server.expect("GET", latest).reply(status, status == 204 ? "" : enveloped(R"({"version":1})"));
        expectRefusal(L"the platform gave no version");
    }
    for (const char* body : {"", "null", "[]", "7", "{}", R"({"data":null})", R"({"data":{}})", R"({"data":{"version":"1"}})",
                             R"({"data":{"version":-3}})", R"({"data":{"version":1.5}})", R"({"data":{"version":4294967297}})"}) {
        SCOPED_TRACE(body);
        server.expect("GET", latest).reply(200, body);
        expectRefusal(L"the platform didn't tell of the version that it was asked for");
    }
    expectVersion(latest, 3);
    expectVersion(numbered(2), 3);
    expectRefusal(L"the platform didn't tell of the version that it was asked for");
}

TEST_F(VersionListWireTest, takesFieldsOfAnotherTypeForUntold)
{
    server.expect("GET", latest)
        .reply(200, enveloped(R"({"id":"12","version":1,"dataSetSourceFile":7,"displayVersion":[],"status":{},"creationTime":1,)"
                              R"("size":"big","versionIndex":"x"})"));
    const std::vector<DatasetFileVersion> versions = list();
    ASSERT_EQ(versions.size(), 1u);
    EXPECT_EQ(versions[0].id, 0);
    EXPECT_EQ(versions[0].sourceFile + versions[0].displayVersion + versions[0].status + versions[0].creationTime, L"");
    EXPECT_EQ(versions[0].size, -1);
    server.verify();
    server.expect("GET", latest).reply(200, enveloped(R"({"version":1,"size":-9223372036854775807})"));
    EXPECT_EQ(list().at(0).size, -1);
}

TEST_F(VersionListWireTest, thatIsCancelledIsNone)
{
    const CancelToken token;
    const CallScope scope(token);
    expectVersion(latest, 3);
    server.expect("GET", numbered(2)).replyWith([&](const Request&) {
        token.cancel();
        return Reply();
    });
    EXPECT_TRUE(list().empty());
    EXPECT_TRUE(isCancelled(error));
}

TEST_F(VersionListWireTest, refusesItsInputWithoutARequest)
{
    EXPECT_TRUE(DatasetFiles::listVersions("", error).empty());
    expectGenericError(error, 3892314117, L"GenericError", L"datasetId is empty");
    error.Clear();
    for (const int atMost : {0, -1}) {
        EXPECT_TRUE(list(-1, atMost).empty());
        expectGenericError(error, badInputValue, L"GenericError", L"atMost is not above 0");
        error.Clear();
    }
    EXPECT_EQ(server.requestCount(), 0u);
}

class VersionDownloadWireTest : public TransferTest
{
protected:
    PromiseData download(int version = 3) { return download(version, target); }
    PromiseData download(int version, const std::wstring& to)
    {
        return outcomeOf(DatasetFiles::downloadVersion("d-1", version, to, error));
    }

    /// more: further members of the record.
    void expectVersion(const std::string& sourceFile, const std::string& more = {})
    {
        platform.expect("GET", numbered(3)).reply(200, enveloped(R"({"version":3,"dataSetSourceFile":")" + sourceFile + "\"" + more + "}"));
    }
    void expectAddress() { platform.expect("POST", "/file/read").body("a/plan.dwg").reply(200, authority("x", atStore("/b?sig=SECRET"))); }
    void expectPlainVersion(const std::string& more = {})
    {
        expectVersion("a/plan.dwg", more);
        expectAddress();
    }
    Expectation& expectGet() { return store.expect("GET", "/b?sig=SECRET"); }

    static Reply withSum(Reply reply, const std::string& sum)
    {
        reply.headers.emplace_back("Content-MD5", sum);
        return reply;
    }

    void expectBrought(const std::string& content)
    {
        expectOutcome(download(), true, 200, target);
        expectClear(error);
        EXPECT_TRUE(readFile(localPath("平面 图.dwg")) == content);
        EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/平面 图.dwg"});
    }

    /// The whole failure: outcome, ErrorCode, log, the file that was there, and nothing else.
    void expectRefused(const std::wstring& words)
    {
        writeFile(localPath("平面 图.dwg"), "what was there before");
        log.clear();
        expectOutcome(download(), false, 5555, words);
        expectGenericError(error, badInputValue, L"GenericError", words);
        EXPECT_TRUE(log.has(L"E@orlo::DatasetFiles::downloadVersion " + words));
        expectUntouched();
    }
    void expectStatus(int status, const std::wstring& words)
    {
        writeFile(localPath("平面 图.dwg"), "what was there before");
        expectOutcome(download(), false, status, words);
        expectHttpError(error, errorStatusValue, L"HttpError", words, status);
        expectUntouched();
    }
    void expectUntouched()
    {
        EXPECT_EQ(readFile(localPath("平面 图.dwg")), "what was there before");
        EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/平面 图.dwg"});
        platform.verify();
        store.verify();
        EXPECT_FALSE(log.holds(L"SECRET"));
        EXPECT_EQ(error.GetErrorMessage().find(L"SECRET"), std::wstring::npos);
        error.Clear();
    }

    const std::wstring target = wideLocalPath("平面 图.dwg");
};

TEST_F(VersionDownloadWireTest, asksForTheVersionForTheAddressAndForTheBytes)
{
    const std::string content = patterned(3 << 20);
    platform.expect("GET", numbered(3))
        .header("Authorization", "Bearer token-secret-1")
        .reply(200, enveloped(R"({"version":3,"dataSetSourceFile":"项目/1/a b.dwg","size":3145728})"));
    platform.expect("POST", "/file/read")
        .body("项目/1/a b.dwg")
        .header("Content-Type", "text/plain; charset=utf-8")
        .reply(200, authority("x", atStore("/b?sig=SECRET")));
    expectGet().withoutHeader("Authorization").withoutHeader("Accept-Encoding").header("Content-Type", "").reply(fileReply(content));
    expectBrought(content);
    EXPECT_FALSE(log.holds(L"SECRET"));
}

TEST_F(VersionDownloadWireTest, ofTheLatestAsksForThatOneAlone)
{
    platform.expect("GET", latest).reply(200, enveloped(R"({"version":9,"dataSetSourceFile":"a/plan.dwg","size":5})"));
    expectAddress();
    expectGet().reply(fileReply("bytes"));
    expectOutcome(download(-1), true, 200, target);
    EXPECT_EQ(readFile(localPath("平面 图.dwg")), "bytes");
}

TEST_F(VersionDownloadWireTest, takesThePathOutOfWhatAnUploadLeft)
{
    expectVersion(R"({\"remoteFilePath\":\"a/plan.dwg\",\"length\":5})", R"(,"size":5)");
    expectAddress();
    expectGet().reply(fileReply("bytes"));
    expectBrought("bytes");
}

TEST_F(VersionDownloadWireTest, ofADocumentAsksForTheDocumentsOwnVersion)
{
    expectVersion("f-1", R"(,"size":5,"versionIndex":7)");
    platform.expect("POST", "/file/doc/f-1/download/url?version=7")
        .header("Content-Length", "0")
        .reply(200, enveloped(authority("x", atStore("/b?sig=SECRET"))));
    expectGet().reply(fileReply("bytes"));
    expectBrought("bytes");
}

TEST_F(VersionDownloadWireTest, ofADocumentThatIsNotToldAsksForTheDatasetsNumber)
{
    for (const char* more : {R"(,"size":5)", R"(,"size":5,"versionIndex":-2)", R"(,"size":5,"versionIndex":"7")"}) {
        expectVersion("f-1", more);
        platform.expect("POST", "/file/doc/f-1/download/url?version=3").reply(200, enveloped(authority("x", atStore("/b?sig=SECRET"))));
        expectGet().reply(fileReply("bytes"));
        expectBrought("bytes");
    }
}

TEST_F(VersionDownloadWireTest, ofADocumentOfWhichNothingIsToldIsRefused)
{
    expectVersion("f-1");
    expectRefused(L"the platform tells neither the version of the document nor its size");
    EXPECT_EQ(platform.requestCount(), 1u);
}

TEST_F(VersionDownloadWireTest, ofAnotherSizeIsRefused)
{
    for (const char* size : {"4", "6", "0", "5368709120"}) {
        expectPlainVersion(R"(,"size":)" + std::string(size));
        expectGet().reply(fileReply("bytes"));
        expectRefused(L"the file is another than the version tells: 5 bytes instead of " + utils::toWstring(size));
    }
}

TEST_F(VersionDownloadWireTest, ofAnotherSizeIsRefusedThoughItIsLarge)
{
    expectPlainVersion(R"(,"size":3000001)");
    expectGet().reply(fileReply(patterned(3000000)));
    expectRefused(L"the file is another than the version tells: 3000000 bytes instead of 3000001");
}

TEST_F(VersionDownloadWireTest, whoseSizeIsNotToldComesAsItIs)
{
    for (const char* more : {"", R"(,"size":-1)", R"(,"size":-9223372036854775807)", R"(,"size":"5")"}) {
        expectPlainVersion(more);
        expectGet().reply(fileReply("bytes"));
        expectBrought("bytes");
    }
}

TEST_F(VersionDownloadWireTest, whoseSumIsToldMustHaveIt)
{
    expectPlainVersion(R"(,"size":5)");
    expectGet().reply(withSum(fileReply("bytes"), "SzpiGLs+OnMD6KFxpg/Pkg==")); // md5 of "bytes"
    expectBrought("bytes");
    for (const char* altered : {"byteS", "\x1F\x8B\x08xy"}) {
        expectPlainVersion(R"(,"size":5)");
        expectGet().reply(withSum(fileReply(altered), "SzpiGLs+OnMD6KFxpg/Pkg=="));
        expectRefused(L"the file is another than the store tells: its MD5 isn't 4b3a6218bb3e3a7303e8a171a60fcf92");
    }
}

TEST_F(VersionDownloadWireTest, takesWhatIsNoSumForNone)
{
    for (const char* sum :
         {"", "none", "====", "SzpiGLs+OnMD6KFxpg/Pkg", "SzpiGLs+OnMD6KFxpg/P", "4b3a6218bb3e3a7303e8a171a60fcf92", "AAAA"}) {
        expectPlainVersion(R"(,"size":5)");
        expectGet().reply(withSum(fileReply("bytes"), sum));
        expectBrought("bytes");
    }
}

TEST_F(VersionDownloadWireTest, thatComesPackedIsComparedUnpackedAndWithoutTheSum)
{
    const std::string content = patterned(2 << 20);
    expectPlainVersion(R"(,"size":2097152)");
    expectGet().reply(withSum(fileReply(gzipOf(content), "gzip"), "SzpiGLs+OnMD6KFxpg/Pkg=="));
    expectBrought(content);
}

TEST_F(VersionDownloadWireTest, bringsAPackedFileAsItIs)
{
    const std::string packed = gzipOf("a file that the user has packed");
    expectPlainVersion(R"(,"size":)" + std::to_string(packed.size()));
    expectGet().reply(fileReply(packed));
    expectBrought(packed);
}

TEST_F(VersionDownloadWireTest, bringsAnEmptyFile)
{
    expectPlainVersion(R"(,"size":0)");
    expectGet().reply(fileReply(""));
    expectBrought("");
}

TEST_F(VersionDownloadWireTest, replacesAFileThatIsThere)
{
    writeFile(localPath("平面 图.dwg"), "the old and longer content");
    expectPlainVersion(R"(,"size":3)");
    expectGet().reply(fileReply("new"));
    expectBrought("new");
}

TEST_F(VersionDownloadWireTest, toAnEmptyPathMakesANewFile)
{
    expectPlainVersion(R"(,"size":5)");
    expectGet().reply(fileReply("bytes"));
    const PromiseData outcome = download(3, L"");
    EXPECT_TRUE(outcome.success);
    EXPECT_EQ(readFile(utils::makePath(outcome.message)), "bytes");
    EXPECT_EQ(temporaryFiles().size(), 1u);
}

TEST_F(VersionDownloadWireTest, withoutAFileIsRefused)
{
    for (const char* source : {R"("")", "7", "null", R"("{\"other\":1}")", R"("{\"remoteFilePath\":7}")"}) {
        platform.expect("GET", numbered(3))
            .reply(200, enveloped(R"({"version":3,"size":0,"dataSetSourceFile":)" + std::string(source) + "}"));
        expectRefused(L"the version has no file");
    }
}

TEST_F(VersionDownloadWireTest, thatIsAnotherThanTheOneAskedForIsRefused)
{
    platform.expect("GET", numbered(3)).reply(200, enveloped(R"({"version":4,"dataSetSourceFile":"a/plan.dwg"})"));
    expectRefused(L"the platform didn't tell of the version that it was asked for");
    platform.expect("GET", numbered(3)).reply(204, "");
    expectRefused(L"the platform gave no version");
}

TEST_F(VersionDownloadWireTest, endsWithTheStatusOfTheRequestThatFailed)
{
    for (const int status : {401, 403, 404, 500}) {
        platform.expect("GET", numbered(3)).reply(status, "no 版本");
        expectStatus(status, L"no 版本");
        expectVersion("a/plan.dwg");
        platform.expect("POST", "/file/read").body("a/plan.dwg").reply(status, "no address");
        expectStatus(status, L"no address");
        expectVersion("f-1", R"(,"size":5)");
        platform.expect("POST", "/file/doc/f-1/download/url?version=3").reply(status, "no document");
        expectStatus(status, L"no document");
        expectPlainVersion();
        expectGet().reply(status, "no bytes");
        expectStatus(status, L"no bytes");
    }
}

TEST_F(VersionDownloadWireTest, needsAnAddress)
{
    for (const char* body : {"", "null", "[]", "{}", R"({"fileUrlWithSAS":7})", R"({"fileUrlWithSAS":""})"}) {
        expectVersion("a/plan.dwg");
        platform.expect("POST", "/file/read").body("a/plan.dwg").reply(200, body);
        expectRefused(L"the platform gave no address of the file");
    }
    expectVersion("a/plan.dwg");
    platform.expect("POST", "/file/read").body("a/plan.dwg").reply(204, "");
    expectRefused(L"the platform gave no address of the file");
}

TEST_F(VersionDownloadWireTest, anAddressThatIsNoneFailsWithoutAWordOfIt)
{
    for (const char* address : {"no address at all SECRET", "/c/SECRET?sig=SECRET", "http://127.0.0.1/a|b?sig=SECRET",
                                "ftp://127.0.0.1/SECRET", "http://127.0.0.1:1/c?sig=SECRET"}) {
        SCOPED_TRACE(address);
        writeFile(localPath("平面 图.dwg"), "what was there before");
        expectVersion("a/plan.dwg");
        platform.expect("POST", "/file/read").body("a/plan.dwg").reply(200, authority("x", address));
        const PromiseData outcome = download();
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, 5555);
        EXPECT_EQ(outcome.message.find(L"SECRET"), std::wstring::npos);
        EXPECT_FALSE(error.isClear());
        expectUntouched();
    }
}

TEST_F(VersionDownloadWireTest, anyStatusOfTheFileButTwoHundredIsAFailure)
{
    for (const int status : {201, 204, 206, 302}) {
        expectPlainVersion();
        expectGet().reply(status, status == 204 ? "" : "part");
        expectRefused(L"the store gave no file");
    }
}

TEST_F(VersionDownloadWireTest, thatBreaksOffLeavesTheOldFileAndNothingElse)
{
    const std::string answer = rawOk(patterned(4 << 20));
    const RawAnswer endings[] = {RawAnswer::resetAfter(answer, 3 << 20), RawAnswer::closeAfter(answer, 3 << 20),
                                 RawAnswer::closeAfter(answer, answer.size() - 1), RawAnswer::resetBeforeAnswer()};
    for (const RawAnswer& ending : endings) {
        const RawServer broken(ending);
        writeFile(localPath("平面 图.dwg"), "what was there before");
        expectVersion("a/plan.dwg", R"(,"size":4194304)");
        platform.expect("POST", "/file/read").body("a/plan.dwg").reply(200, authority("x", broken.url() + "/b?sig=SECRET"));
        const PromiseData outcome = download();
        EXPECT_FALSE(outcome.success);
        EXPECT_EQ(outcome.status, 5555);
        EXPECT_EQ(error.GetValue(), exceptionValue);
        EXPECT_EQ(outcome.message, error.GetErrorMessage());
        expectUntouched();
    }
}

TEST_F(VersionDownloadWireTest, thatIsCancelledLeavesTheOldFileAndNothingElse)
{
    const SocketServer half([](Connection& connection) {
        Request request;
        if (readRequest(connection, request) != ReadResult::request)
            return;
        connection.write(rawOk(patterned(4 << 20)).substr(0, 3 << 20));
        std::string rest;
        while (connection.read(rest)) {
        }
    });
    writeFile(localPath("平面 图.dwg"), "what was there before");
    expectVersion("a/plan.dwg", R"(,"size":4194304)");
    platform.expect("POST", "/file/read").body("a/plan.dwg").reply(200, authority("x", half.url() + "/b?sig=SECRET"));
    const CancelToken token;
    const CallScope scope(token);
    auto future = DatasetFiles::downloadVersion("d-1", 3, target, error);
    EXPECT_TRUE(waitUntil([&] { return filesBelow(host.folder().path("Local")).size() == 2; })) << "it lies beside its place";
    token.cancel();
    expectOutcome(outcomeOf(future), false, 5555, L"cancelled");
    EXPECT_TRUE(isCancelled(error));
    expectUntouched();
    expectOutcome(download(), false, 5555, L"cancelled");
    expectUntouched();
}

TEST_F(VersionDownloadWireTest, tellsItsProgressToItsScope)
{
    const std::string content = patterned(3 << 20);
    expectPlainVersion(R"(,"size":3145728)");
    expectGet().reply(fileReply(content));
    Progress last;
    {
        const CallScope scope([&](const Progress& progress) { last = progress; });
        expectBrought(content);
    }
    EXPECT_EQ(last.fileBytesDone, content.size());
    EXPECT_EQ(last.fileBytesInAll, content.size());
    EXPECT_GT(last.bytesDone, content.size()) << "the record and the address count too";
}

TEST_F(VersionDownloadWireTest, repeatsEachOfItsRequests)
{
    const RetryLimit two(2);
    platform.expect("GET", numbered(3)).reply(503, "busy");
    platform.expect("GET", numbered(3)).reset();
    expectVersion("a/plan.dwg", R"(,"size":5)");
    platform.expect("POST", "/file/read").body("a/plan.dwg").times(2).reply(429, "slow down");
    expectAddress();
    expectGet().reply(503, "these words are longer than the file");
    expectGet().reset();
    expectGet().reply(fileReply("bytes"));
    expectBrought("bytes");
    platform.verify();
    store.verify();
    EXPECT_EQ(platform.requestCount(), 6u);
    EXPECT_EQ(store.requestCount(), 3u);
}

TEST_F(VersionDownloadWireTest, refusesItsInputWithoutARequest)
{
    expectOutcome(outcomeOf(DatasetFiles::downloadVersion("", 1, target, error)), false, 400, L"datasetId is empty");
    expectGenericError(error, 3892314117, L"GenericError", L"datasetId is empty");
    error.Clear();
    writeFile(localPath("file"), "no folder");
    for (const std::wstring& path :
         {target + std::wstring(1, L'\0') + L".dwg", wideLocalPath("") + L"none/plan.dwg", wideLocalPath("file") + L"/plan.dwg",
          host.folder().wide("Local"), host.folder().wide("Local") + L"/"}) {
        expectOutcome(download(3, path), false, 400, L"invalid file path");
        expectGenericError(error, badInputValue, L"GenericError", L"invalid file path");
        error.Clear();
    }
    EXPECT_EQ(platform.requestCount(), 0u);
    EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{"Local/file"});
}

TEST_F(VersionDownloadWireTest, whoseNameCanNotBeHadLeavesNothing)
{
    expectPlainVersion(R"(,"size":5)");
    expectGet().reply(fileReply("bytes"));
    expectOutcome(download(3, wideLocalPath(std::string(300, 'n'))), false, 5555, L"the file can't be moved to its place");
    expectGenericError(error, exceptionValue, L"GenericError", L"the file can't be moved to its place");
    EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{});
}

TEST_F(VersionDownloadWireTest, namesOfThePlatformNeverBecomeLocalPaths)
{
    for (const char* source : {"../../../outside.dwg", "/etc/outside", "..", R"(..\\..\\outside)", R"(a/b\u0000c)", "a?b#c", "{", "%zz"}) {
        SCOPED_TRACE(source);
        const RawServer anything(
            RawAnswer::bytes(rawOk(enveloped(R"({"version":3,"size":5,"dataSetSourceFile":")" + std::string(source) + "\"}"))));
        moveServices(host, anything.url());
        EXPECT_FALSE(download().success);
        EXPECT_FALSE(error.isClear());
        EXPECT_LE(anything.requests().size(), 2u);
        EXPECT_EQ(filesBelow(host.folder().path()), std::vector<std::string>{});
        error.Clear();
    }
}

} // namespace
} // namespace orlo::test
