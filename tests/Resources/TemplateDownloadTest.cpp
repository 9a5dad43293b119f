#include "support/RequestFailures.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Resources/ITemplateManager.h>

#include <gmock/gmock.h>

#include <algorithm>

// The template of a dataset, brought to the local folder of templates.
namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* samples = "/structural/dataset/d-1/sample/file/list?projectId=p-1";
constexpr const char* resources = "/structural/common/template/resources?templateId=t-1&type=TEMPLATE_FILE";
constexpr const char* resourceUrl = "/structural/common/template/resources/url?resourceId=77&templateId=t-1";
constexpr const char* worker = "E@orlo::worker_download_template_file ";

class TemplateDownloadTest : public TransferTest
{
protected:
    PromiseData download(const std::wstring& dataset = L"d-1", const std::wstring& project = L"p-1")
    {
        return outcomeOf(ITemplateManager::Get()->DownloadTemplateFile(dataset, project, error));
    }

    /// The dataset's sample list, less the brackets.
    void expectSample(const std::string& elements)
    {
        platform.expect("GET", samples).reply(200, R"({"code":10000,"data":[)" + elements + "]}");
    }
    void expectPublicSample(const std::string& templateId = "t-1", const std::string& type = "dwt")
    {
        expectSample(R"({"id":"s-1","templateId":")" + templateId + R"(","samplePlateFrom":"From_Common","type":")" + type + R"("})");
    }
    void expectOwnSample(const std::string& uri, const std::string& type = "dwt")
    {
        expectSample(R"({"id":"s-1","uri":")" + uri + R"(","samplePlateFrom":"From_Customize","type":")" + type + R"("})");
    }
    void expectResource(const std::string& data = R"([{"id":77,"name":"n","size":5,"type":"TEMPLATE_FILE"}])")
    {
        platform.expect("GET", resources).reply(200, R"({"data":)" + data + "}");
    }
    void expectUrl(const std::string& pathAndQuery = "/c?sig=secret-1")
    {
        platform.expect("GET", resourceUrl).reply(200, R"({"data":")" + atStore(pathAndQuery) + R"("})");
    }
    Expectation& expectOwnAuthority(const std::string& fileId)
    {
        return platform.expect("POST", "/file/doc/" + fileId + "/download/url?version=1");
    }

    fs::path folder() const { return host.folder().path("Templates"); }
    std::wstring placeOf(const std::string& name) const { return utils::getTemplatesPath() + L"/" + utils::toWstring(name); }
    void putThere(const std::string& name, const std::string& bytes) const
    {
        fs::create_directories(folder());
        writeFile(folder() / fs::u8path(name), bytes);
    }
    std::vector<std::string> there() const { return filesBelow(folder()); }

    /// The error lines of the worker.
    Lines told() const
    {
        Lines lines;
        for (const std::wstring& line : log.lines()) {
            if (line.find(utils::toWstring(std::string(worker))) == 0)
                lines.push_back(line.substr(std::string(worker).size()));
        }
        return lines;
    }
    void expectFailure(const PromiseData& outcome, const std::wstring& words, bool isLogged = true)
    {
        expectOutcome(outcome, false, 400, words);
        EXPECT_EQ(told(), isLogged ? Lines{words} : Lines{});
        EXPECT_THAT(there(), IsEmpty());
        log.clear();
        platform.verify();
        store.verify();
    }

    const RetryLimit threeRetries{3};
};

TEST_F(TemplateDownloadTest, ofThePublicLibraryComesByItsAddress)
{
    expectPublicSample();
    expectResource();
    expectUrl();
    store.expect("GET", "/c?sig=secret-1").withoutHeader("Authorization").reply(fileReply(patterned(3 << 20)));
    expectOutcome(download(), true, 200, placeOf("t-1-77.dwt"));
    EXPECT_EQ(readFile(folder() / "t-1-77.dwt"), patterned(3 << 20));
    EXPECT_THAT(there(), ElementsAre("t-1-77.dwt"));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
    expectClear(error);
    EXPECT_FALSE(log.holds(L"secret-1"));
    EXPECT_FALSE(log.holds(L"E "));
}

TEST_F(TemplateDownloadTest, ofTheProjectsLibraryComesFromTheDocumentStoreInItsFirstVersion)
{
    expectOwnSample("file-7");
    expectOwnAuthority("file-7").reply(200, R"({"code":10000,"data":)" + authority("r", atStore("/o?sig=secret-1")) + "}");
    store.expect("GET", "/o?sig=secret-1").reply(fileReply("the file"));
    expectOutcome(download(), true, 200, placeOf("file-7.dwt"));
    EXPECT_EQ(readFile(folder() / "file-7.dwt"), "the file");
    expectClear(error);
    EXPECT_FALSE(log.holds(L"secret-1"));
}

TEST_F(TemplateDownloadTest, aFileThatIsThereAnswersWithoutACallForItsAddress)
{
    putThere("t-1-77.dwt", "as old as it may be");
    putThere("file-7.dwt", "mine");
    expectPublicSample();
    expectResource(R"([{"id":77,"size":99999}])");
    expectOutcome(download(), true, 200, placeOf("t-1-77.dwt"));
    expectOwnSample("file-7");
    expectOutcome(download(), true, 200, placeOf("file-7.dwt"));
    EXPECT_EQ(readFile(folder() / "t-1-77.dwt"), "as old as it may be");
    EXPECT_EQ(store.requestCount(), 0u);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TemplateDownloadTest, aTypeInCapitalsMakesAnExtensionInLowerCase)
{
    putThere("t-1-77.dwt", "x");
    putThere("FILE-7.zok", "x");
    expectPublicSample("t-1", "DwT");
    expectResource();
    expectOutcome(download(), true, 200, placeOf("t-1-77.dwt"));
    expectOwnSample("FILE-7", "ZOK");
    expectOutcome(download(), true, 200, placeOf("FILE-7.zok"));
}

TEST_F(TemplateDownloadTest, aNumberBeyond32BitsIsAnIdAsAnyOther)
{
    putThere("t-1-5000000000.dwt", "x");
    putThere("t-1--7.dwt", "x");
    expectPublicSample();
    expectResource(R"([{"id":5000000000}])");
    expectOutcome(download(), true, 200, placeOf("t-1-5000000000.dwt"));
    expectPublicSample();
    expectResource(R"([{"id":-7}])");
    expectOutcome(download(), true, 200, placeOf("t-1--7.dwt"));
}

TEST_F(TemplateDownloadTest, aResourceWithoutANumberHasNoAddress)
{
    for (const char* data : {R"([{"id":"77"}])", R"([{"id":null}])", "[{}]", "[7]"}) {
        expectPublicSample();
        expectResource(data);
        expectFailure(download(), L"resourceId or templateId is empty");
        expectGenericError(error, 3892314117, L"GenericError", L"resourceId or templateId is empty");
        error.Clear();
    }
}

TEST_F(TemplateDownloadTest, ofADatasetWithTwoSamplesFails)
{
    expectSample(R"({"id":"s-1","samplePlateFrom":"From_Customize","uri":"a"},{"id":"s-2"})");
    expectFailure(download(), L"response data isn't normal.");
    expectGenericError(error, badInputValue, L"GenericError", L"response data isn't normal.");
}

// This end and that of an unknown library are the two that aren't logged.
TEST_F(TemplateDownloadTest, ofADatasetWithoutASampleSaysSo)
{
    for (const char* elements : {"", "{}", "7", "null", R"({"id":"","samplePlateFrom":"From_Common"})", R"({"id":7,"uri":"x"})"}) {
        expectSample(elements);
        expectFailure(download(), L"工作单元没有配置样本。", false);
        expectClear(error);
    }
}

TEST_F(TemplateDownloadTest, fromNeitherLibraryIsRefusedToTheLetter)
{
    for (const char* from : {"from_common", "FROM_COMMON", "From_common", "From_Common ", "from_customize", "", "Elsewhere"}) {
        expectSample(R"({"id":"s-1","templateId":"t-1","uri":"u","type":"dwt","samplePlateFrom":")" + std::string(from) + R"("})");
        expectFailure(download(), L"样板来源异常：既不是公共库又不是项目库。", false);
    }
    expectSample(R"({"id":"s-1","templateId":"t-1","uri":"u","type":"dwt","samplePlateFrom":1})");
    expectFailure(download(), L"样板来源异常：既不是公共库又不是项目库。", false);
}

TEST_F(TemplateDownloadTest, withoutADatasetOrAProjectNothingIsSent)
{
    expectFailure(download(L"", L"p-1"), L"datasetId or projectId is empty");
    expectGenericError(error, badInputValue, L"GenericError", L"datasetId or projectId is empty");
    error.Clear();
    expectFailure(download(L"d-1", L""), L"datasetId or projectId is empty");
    EXPECT_EQ(platform.requestCount(), 0u);
}

TEST_F(TemplateDownloadTest, aListOfSamplesThatIsNoArrayFails)
{
    for (const char* body : {R"({"code":10000})", R"({"data":null})", R"({"data":{"id":"s-1"}})", R"({"data":"x"})", "[]", "7"}) {
        platform.expect("GET", samples).reply(200, body);
        expectFailure(download(), L"response data not normal");
        expectGenericError(error, badInputValue, L"GenericError", L"response data not normal");
        error.Clear();
    }
}

TEST_F(TemplateDownloadTest, withoutATemplateIdTheValueOfTheErrorIsSignExtended)
{
    expectSample(R"({"id":"s-1","samplePlateFrom":"From_Common","type":"dwt"})");
    expectFailure(download(), L"templateId is empty");
    expectGenericError(error, -402653183, L"GenericError", L"templateId is empty");
}

TEST_F(TemplateDownloadTest, aTemplateWithoutExactlyOneResourceFails)
{
    for (const char* data : {"[]", R"([{"id":1},{"id":2}])", "null", R"({"id":1})", R"("x")"}) {
        expectPublicSample();
        expectResource(data);
        expectFailure(download(), L"response data not normal");
        expectGenericError(error, badInputValue, L"GenericError", L"response data not normal");
        error.Clear();
    }
}

TEST_F(TemplateDownloadTest, anAddressThatIsNoTextFails)
{
    for (const char* body : {R"({"data":null})", R"({"data":7})", R"({"data":{"fileUrlWithSAS":"x"}})", R"({"data":["x"]})", "{}", "[]"}) {
        expectPublicSample();
        expectResource();
        platform.expect("GET", resourceUrl).reply(200, body);
        expectFailure(download(), L"response data not normal");
        expectGenericError(error, badInputValue, L"GenericError", L"response data not normal");
        error.Clear();
    }
}

TEST_F(TemplateDownloadTest, withoutAUriFails)
{
    for (const char* uri : {"", R"("uri":"",)", R"("uri":7,)", R"("uri":null,)"}) {
        expectSample(R"({"id":"s-1",)" + std::string(uri) + R"("samplePlateFrom":"From_Customize","type":"dwt"})");
        expectFailure(download(), L"样板文件的uri为空");
        expectClear(error);
    }
}

TEST_F(TemplateDownloadTest, thatTheDocumentStoreRefusesFailsInWordsOfItsOwn)
{
    expectOwnSample("file-7");
    expectOwnAuthority("file-7").reply(404, "no such file");
    expectFailure(download(), L"样板文件从Arkiv下载失败");
    expectHttpError(error, errorStatusValue, L"HttpError", L"no such file", 404);
    error.Clear();
    expectOwnSample("file-7");
    expectOwnAuthority("file-7").reply(200, R"({"data":)" + authority("r", atStore("/o")) + "}");
    store.expect("GET", "/o").reply(fileReply(""));
    expectFailure(download(), L"样板文件从Arkiv下载失败");
}

TEST_F(TemplateDownloadTest, aRefusedFileLeavesNothing)
{
    expectPublicSample();
    expectResource();
    expectUrl();
    store.expect("GET", "/c?sig=secret-1").reply(403, "expired");
    expectFailure(download(), L"expired");
    expectHttpError(error, errorStatusValue, L"HttpError", L"expired", 403);
    EXPECT_TRUE(waitUntil([this] { return temporaryFiles().empty(); }));
    EXPECT_FALSE(log.holds(L"secret-1"));
}

TEST_F(TemplateDownloadTest, anAddressThatIsNoneFailsWithoutAWordOfIt)
{
    expectPublicSample();
    expectResource();
    platform.expect("GET", resourceUrl).reply(200, R"({"data":"no address SECRET"})");
    const PromiseData outcome = download();
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 400);
    EXPECT_EQ(outcome.message.find(L"SECRET"), std::wstring::npos);
    EXPECT_FALSE(log.holds(L"SECRET"));
    EXPECT_THAT(there(), IsEmpty());
}

TEST_F(TemplateDownloadTest, everyRequestIsRepeated)
{
    platform.expect("GET", samples).reply(503, "busy");
    expectPublicSample();
    platform.expect("GET", resources).reset();
    expectResource();
    platform.expect("GET", resourceUrl).times(2).reply(429, "slow down");
    expectUrl();
    store.expect("GET", "/c?sig=secret-1").reply(500, "oops");
    store.expect("GET", "/c?sig=secret-1").reply(fileReply("the file"));
    expectOutcome(download(), true, 200, placeOf("t-1-77.dwt"));
    EXPECT_EQ(readFile(folder() / "t-1-77.dwt"), "the file");
    expectClear(error);
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(TemplateDownloadTest, aRequestThatFailsIsToldByThePlatformsWordsAndByNoStatus)
{
    platform.expect("GET", samples).reply(404, "没有");
    expectFailure(download(), L"没有");
    expectHttpError(error, errorStatusValue, L"HttpError", L"没有", 404);
    error.Clear();
    expectPublicSample();
    platform.expect("GET", resources).reply(400, "no template");
    expectFailure(download(), L"no template");
    error.Clear();
    expectPublicSample();
    expectResource();
    platform.expect("GET", resourceUrl).times(4).reply(503, "busy");
    const PromiseData outcome = download();
    expectOutcome(outcome, false, 400, L"busy");
    EXPECT_EQ(told(), Lines{L"busy"});
    EXPECT_FALSE(log.holds(L"- code:")) << "these requests log no status";
}

TEST_F(TemplateDownloadTest, aStatusThatIsNoErrorFailsWithoutWords)
{
    platform.expect("GET", samples).reply(201, R"({"data":[]})");
    expectFailure(download(), L"");
    expectClear(error);
}

TEST_F(TemplateDownloadTest, aBodyThatIsNoJsonFailsWithoutAnotherAttempt)
{
    platform.expect("GET", samples).reply(200, "<html>");
    const PromiseData outcome = download();
    EXPECT_FALSE(outcome.success);
    EXPECT_EQ(outcome.status, 400);
    EXPECT_NE(outcome.message, L"");
    expectHttpError(error, exceptionValue, L"generic exception", outcome.message, 5555);
}

TEST_F(TemplateDownloadTest, aNameThatLeavesTheFolderIsRefused)
{
    constexpr const wchar_t* leaves = L"invalid template which leaves the templates folder";
    const fs::path victim = host.folder().path("Local/victim.dwt");
    localFile("victim.dwt", "untouched");
    for (const char* uri : {"../Local/victim", "/etc/passwd/../../../tmp/x", "a/../../Local/victim", "a\\u0000b"}) {
        SCOPED_TRACE(uri);
        expectOwnSample(uri);
        expectFailure(download(), leaves);
    }
    expectOwnSample("a", "x/../../Local/victim.dwt");
    expectFailure(download(), leaves);
    platform.expect("GET", samples)
        .reply(200, R"({"data":[{"id":"s-1","templateId":"../Local/t","samplePlateFrom":"From_Common","type":"dwt"}]})");
    platform.expect("GET", "/structural/common/template/resources?templateId=../Local/t&type=TEMPLATE_FILE")
        .reply(200, R"({"data":[{"id":77}]})");
    expectFailure(download(), leaves);
    EXPECT_EQ(readFile(victim), "untouched");
    EXPECT_EQ(store.requestCount(), 0u);
}

TEST_F(TemplateDownloadTest, aLinkThatLeadsOutIsNoFileOfTheFolderAndIsReplaced)
{
    localFile("victim.dwt", "untouched");
    fs::create_directories(folder());
    fs::create_symlink(localPath("victim.dwt"), folder() / "file-7.dwt");
    expectOwnSample("file-7");
    expectOwnAuthority("file-7").reply(200, R"({"data":)" + authority("r", atStore("/o")) + "}");
    store.expect("GET", "/o").reply(fileReply("the file"));
    expectOutcome(download(), true, 200, placeOf("file-7.dwt"));
    EXPECT_EQ(readFile(folder() / "file-7.dwt"), "the file");
    EXPECT_FALSE(fs::is_symlink(folder() / "file-7.dwt"));
    EXPECT_EQ(readFile(localPath("victim.dwt")), "untouched");
}

TEST_F(TemplateDownloadTest, anOutcomeReplacesAnEarlierError)
{
    error.Assign(exceptionValue, std::make_shared<GenericError>(L"old"));
    expectSample("");
    expectOutcome(download(), false, 400, L"工作单元没有配置样本。");
    expectClear(error);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::TemplateManager::DownloadTemplateFile 传入的ErrorCode，已有错误存在:old"});
}

TEST_F(TemplateDownloadTest, twoOfOneFileMayGoOnAtOnce)
{
    platform.always("GET", samples)
        .reply(200, R"({"data":[{"id":"s-1","templateId":"t-1","samplePlateFrom":"From_Common","type":"dwt"}]})");
    platform.always("GET", resources).reply(200, R"({"data":[{"id":77}]})");
    platform.always("GET", resourceUrl).reply(200, R"({"data":")" + atStore("/c") + R"("})");
    store.always("GET", "/c").reply(fileReply(patterned(300000)));
    std::vector<ErrorCode> errors(8);
    std::vector<std::future<PromiseData>> downloads;
    for (ErrorCode& each : errors)
        downloads.push_back(ITemplateManager::Get()->DownloadTemplateFile(L"d-1", L"p-1", each));
    for (auto& each : downloads)
        expectOutcome(outcomeOf(each), true, 200, placeOf("t-1-77.dwt"));
    EXPECT_EQ(readFile(folder() / "t-1-77.dwt"), patterned(300000));
    EXPECT_THAT(there(), ElementsAre("t-1-77.dwt"));
    EXPECT_THAT(temporaryFiles(), IsEmpty());
}

} // namespace
} // namespace orlo::test
