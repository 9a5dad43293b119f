#include "support/Sql.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/Resources/ITemplateManager.h>

#include <gmock/gmock.h>

// Templates handed to jobs.
namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr const char* operation = "orlo::TemplateManager::UploadTemplateByJob";
constexpr const char* authorityTarget =
    "/file/doc/upload/url/with/filename?fileName=%E6%A0%B7%20%E4%B8%80.dwt&filepath=/account-1&targetFolderId=";

class TemplateJobTest : public TransferTest
{
protected:
    void TearDown() override
    {
        IJobManager::Stop();
        TransferTest::TearDown();
    }

    bool submit(SpecialtyType specialty = SpecialtyType::ZIM, const std::wstring& name = L"结构 \"A\"")
    {
        return ITemplateManager::Get()->UploadTemplateByJob(name, L"p-1", file, specialty, error);
    }
    /// Lets the manager run what was handed over, until nothing is left.
    void runJobs()
    {
        JobManagerOptions options;
        options.onEvent = [this](const JobEvent& event) {
            if (event.kind == JobEvent::Kind::Ended)
                outcomes.push_back(std::dynamic_pointer_cast<UploadJobEntity>(event.job)->future().get());
        };
        ASSERT_TRUE(IJobManager::Start(options));
        ASSERT_TRUE(submit());
        EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)));
        EXPECT_TRUE(IJobManager::Stop());
        EXPECT_THAT(rows("json"), IsEmpty());
        EXPECT_THAT(copies(), IsEmpty());
        EXPECT_EQ(readFile(localPath("样 一.dwt")), "bytes") << "the user's own file";
    }

    void expectStored(const std::string& answer = R"({"data":{"fileId":"file-7","versionIndex":3,"length":5}})")
    {
        platform.expect("GET", authorityTarget).reply(200, R"({"data":)" + authority("r", atStore("/1?sig=abc")) + "}");
        store.expect("PUT", "/1?sig=abc").body("bytes").reply(200, answer);
    }
    Expectation& expectAddition()
    {
        // Intended: the size that is told is the number of the version.
        return platform.expect("POST", "/customize/project/p-1/sample/plate")
            .body(R"({"appVersion":"","name":"结构 \"A\"","size":3,"specialty":"ZIM","uri":"file-7"})");
    }

    fs::path jobs() const { return host.folder().path("Jobs"); }
    std::vector<std::string> rows(const std::string& column) const
    {
        return fs::exists(jobs() / "jobs.db") ? sqlTexts(jobs() / "jobs.db", "SELECT " + column + " FROM job ORDER BY rank")
                                              : std::vector<std::string>();
    }
    std::vector<std::string> copies() const { return filesBelow(jobs() / "p-1"); }

    const RetryLimit threeRetries{3};
    const std::wstring file = localFile("样 一.dwt", "bytes");
    std::vector<PromiseData> outcomes;
};

TEST_F(TemplateJobTest, withoutAJobManagerTheJobIsSavedAndTheFailureLogged)
{
    EXPECT_FALSE(submit());
    EXPECT_EQ(log.lines(), Lines{L"E@" + utils::toWstring(operation) + L" pMgr is null"});
    expectClear(error);
    EXPECT_THAT(rows("typeKey || '|' || jobType"), ElementsAre("E6FDB37F - 39D1 - 4BDD - A8E6 - 59E881C78190|3"));
    EXPECT_THAT(rows("json_remove(json_extract(json, '$.cloudifyFile'), '$.createTime', '$.localFilePath')"),
                ElementsAre(R"({"projectId":"p-1","fileName":"结构 \"A\"","fileId":"","folderId":"","dsId":"","dsVersion":-1})"));
    const std::vector<std::string> copy = rows("json_extract(json, '$.cloudifyFile.localFilePath')");
    ASSERT_THAT(copy, SizeIs(1));
    EXPECT_EQ(readFile(fs::u8path(copy[0])), "bytes");
    EXPECT_EQ(fs::u8path(copy[0]).filename(), fs::u8path("样 一.dwt")) << "the template's name is none of a file";
    EXPECT_THAT(copies(), SizeIs(1));
    EXPECT_EQ(platform.requestCount(), 0u);
}

TEST_F(TemplateJobTest, doesNotCareWhatBecomesOfTheFile)
{
    submit();
    fs::remove(localPath("样 一.dwt"));
    EXPECT_EQ(readFile(fs::u8path(rows("json_extract(json, '$.cloudifyFile.localFilePath')").at(0))), "bytes");
}

TEST_F(TemplateJobTest, aFileThatCannotBeCopiedIsRefused)
{
    ITemplateManager& manager = *ITemplateManager::Get();
    EXPECT_FALSE(manager.UploadTemplateByJob(L"n", L"p-1", L"/no/such/file", SpecialtyType::ZOK, error));
    EXPECT_FALSE(manager.UploadTemplateByJob(L"n", L"p-1", L"", SpecialtyType::ZOK, error));
    const std::wstring refused = L"E@" + utils::toWstring(operation) + L" copy file failed";
    EXPECT_EQ(log.lines(), (Lines{refused, refused}));
    log.clear();
    EXPECT_FALSE(manager.UploadTemplateByJob(L"n", L"../p-1", file, SpecialtyType::ZOK, error));
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::CopyFileToTempPath 创建文件路径失败", refused}));
    expectClear(error);
    EXPECT_THAT(rows("json"), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(TemplateJobTest, thatCannotBeSavedIsNotAcceptedAndLeavesNoCopy)
{
    fs::create_directories(jobs() / "jobs.db");
    EXPECT_FALSE(submit());
    EXPECT_TRUE(log.has(L"E@" + utils::toWstring(operation) + L" the job can't be saved"));
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(TemplateJobTest, uploadsTheFileAndAddsItToTheProject)
{
    expectStored();
    expectAddition().reply(200, "");
    runJobs();
    ASSERT_THAT(outcomes, SizeIs(1));
    expectOutcome(outcomes[0], true, 200, L"Upload template success");
}

TEST_F(TemplateJobTest, failsWithTheWordsOfTheUpload)
{
    platform.expect("GET", authorityTarget).reply(403, "没有权限");
    runJobs();
    ASSERT_THAT(outcomes, SizeIs(1));
    expectOutcome(outcomes[0], false, 10011, L"上传文件失败：没有权限");
}

TEST_F(TemplateJobTest, failsWithoutWordsWhereTheStoreNamesNoFile)
{
    expectStored(R"({"data":{"versionIndex":3}})");
    runJobs();
    ASSERT_THAT(outcomes, SizeIs(1));
    expectOutcome(outcomes[0], false, 10011, L"上传文件失败：");
}

TEST_F(TemplateJobTest, failsWhenTheProjectDoesNotTakeItThoughTheFileIsThere)
{
    expectStored();
    expectAddition().reply(409, "taken");
    runJobs();
    ASSERT_THAT(outcomes, SizeIs(1));
    expectOutcome(outcomes[0], false, 10011, L"上传文件失败：taken");
}

TEST_F(TemplateJobTest, theAdditionIsTriedAgainWithoutAnotherUpload)
{
    expectStored();
    expectAddition().times(3).reply(503, "busy");
    expectAddition().reply(200, "");
    runJobs();
    ASSERT_THAT(outcomes, SizeIs(1));
    EXPECT_TRUE(outcomes[0].success);
}

class TemplateJobSpecialty : public TemplateJobTest, public testing::WithParamInterface<std::pair<int, const char*>>
{};

TEST_P(TemplateJobSpecialty, isToldByItsName)
{
    ASSERT_TRUE(IJobManager::Start({}));
    platform.expect("GET", authorityTarget).reply(200, R"({"data":)" + authority("r", atStore("/1")) + "}");
    store.expect("PUT", "/1").body("bytes").reply(200, R"({"data":{"fileId":"f","versionIndex":1}})");
    platform.expect("POST", "/customize/project/p-1/sample/plate")
        .body(R"({"appVersion":"","name":"n","size":1,"specialty":")" + std::string(GetParam().second) + R"(","uri":"f"})")
        .reply(200, "");
    EXPECT_TRUE(submit(static_cast<SpecialtyType>(GetParam().first), L"n"));
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)));
}

INSTANTIATE_TEST_SUITE_P(TemplateJob, TemplateJobSpecialty,
                         testing::Values(std::pair{1, "ZOK"}, std::pair{2, "ZIM"}, std::pair{3, "ZUTA"}, std::pair{4, "ZEB"},
                                         std::pair{0, "Unknown"}, std::pair{5, "Unknown"}, std::pair{-1, "Unknown"}),
                         [](const auto& tested) { return "number" + std::to_string(tested.index); });

} // namespace
} // namespace orlo::test
