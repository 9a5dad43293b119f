#include "UploadJobsTest.h"
#include "support/FaultyFiles.h"
#include "support/TestJob.h"
#include "support/Waiting.h"

#include <OrloAuth/UserSession.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

#include <thread>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Files = ICollaborationFileManager;

/// The one worker is held, so that submitted jobs wait with their rows.
class Submission : public UploadJobsTest
{
protected:
    void SetUp() override { startManager(); }
    void TearDown() override
    {
        letNoMoreJobsRun();
        stopManager();
        TestJob::forgetAll();
        UploadJobsTest::TearDown();
    }
    void startManager()
    {
        gate = std::make_shared<Gate>();
        TestJob::behave(waitAt(gate));
        JobManagerOptions options;
        options.workers = 1;
        ASSERT_TRUE(IJobManager::Start(options));
        const auto blocker = std::make_shared<TestJob>("blocker");
        IJobManager::Get()->AddJob(blocker);
        ASSERT_TRUE(waitUntil([this] { return gate->arrived() == 1; }));
    }
    /// The manager is gone a moment before its worker knows; the worker may take one more job in between, but none of an account that
    /// isn't there.
    static void letNoMoreJobsRun() { UserSession::SignOut(); }
    void stopManager()
    {
        auto stopping = std::async(std::launch::async, [] { return IJobManager::Stop(); });
        ASSERT_TRUE(waitUntil([] { return IJobManager::Get() == nullptr; }));
        gate->open();
        EXPECT_TRUE(stopping.get());
    }

    /// The fields in the rows that name what is to be done, each row in a line.
    std::vector<std::string> orders() const
    {
        return sqlTexts(jobsFolder() / "jobs.db",
                        "SELECT typeKey || '|' || jobType || '|' || json_extract(json, '$.cloudifyFile.projectId') || '|' || "
                        "json_extract(json, '$.cloudifyFile.folderId') || '|' || json_extract(json, '$.cloudifyFile.fileName') || '|' || "
                        "json_extract(json, '$.cloudifyFile.fileId') || '|' || json_extract(json, '$.cloudifyFile.dsId') || '|' || "
                        "json_extract(json, '$.cloudifyFile.dsVersion') FROM job ORDER BY rank");
    }
    static std::string order(const std::string& rest) { return "E6FDB37F - 39D1 - 4BDD - A8E6 - 59E881C78190|2|" + rest; }
    /// The bytes of the copies that the rows name, in their order.
    std::vector<std::string> copiedBytes() const
    {
        std::vector<std::string> all;
        for (const std::string& path :
             sqlTexts(jobsFolder() / "jobs.db", "SELECT json_extract(json, '$.cloudifyFile.localFilePath') FROM job ORDER BY rank"))
            all.push_back(readFile(fs::u8path(path)));
        return all;
    }
    std::size_t jobsInHand() const { return IJobManager::Get()->GetJobs().size() - 1; }

    /// Three requests: the project, its folders, and the datasets of its one folder.
    void expectFolder(const std::string& datasets)
    {
        platform.expect("GET", "/v2/projects/p-1").reply(200, R"({"code":10000,"data":{"id":"p-1","name":"Tower"}})");
        platform.expect("GET", "/folder/byproject?projectId=p-1").reply(200, R"([{"id":"f-1","parentId":""}])");
        platform.expect("GET", "/dataset/byfolder?folderId=f-1").reply(200, datasets);
    }
    void expectNothingSubmitted()
    {
        EXPECT_EQ(jobsInHand(), 0u);
        EXPECT_FALSE(fs::exists(jobsFolder() / "jobs.db") && !rows().empty());
        EXPECT_THAT(copies(), IsEmpty());
    }

    std::shared_ptr<Gate> gate;
    const std::wstring plan = localFile("plan.dwg", "plan's bytes");
    const std::wstring roof = localFile("顶.dwg", "roof's bytes");
};

TEST_F(Submission, ofAFileSavesAndAddsAJobWithACopy)
{
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"夹-1", plan));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|夹-1|plan.dwg|||-1")));
    EXPECT_THAT(copiedBytes(), ElementsAre("plan's bytes"));
    EXPECT_THAT(copies(), ElementsAre("*/plan.dwg"));
    EXPECT_EQ(jobsInHand(), 1u);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(Submission, ofAFileUnderAnotherNameCopiesItUnderThatName)
{
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", plan, L"新 一.dwg"));
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", plan, L""));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|新 一.dwg|||-1"), order("p-1|f-1|plan.dwg|||-1")));
    EXPECT_THAT(copies(), ElementsAre("*/plan.dwg", "*/新 一.dwg"));
}

TEST_F(Submission, ofAnUpdateNamesTheFile)
{
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", L"文-3", plan));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|文-3||-1")));
    EXPECT_THAT(copiedBytes(), ElementsAre("plan's bytes"));
}

TEST_F(Submission, ofFilesMakesAJobForEachInTheirOrder)
{
    expectFolder("[]");
    EXPECT_TRUE(Files::UploadFilesByJob("p-1", L"f-1", {roof, plan, roof}));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|顶.dwg|||-1"), order("p-1|f-1|plan.dwg|||-1"), order("p-1|f-1|顶.dwg|||-1")));
    EXPECT_THAT(copiedBytes(), ElementsAre("roof's bytes", "plan's bytes", "roof's bytes"));
    EXPECT_EQ(jobsInHand(), 3u);
}

TEST_F(Submission, aFileWhoseNameIsInTheFolderBecomesAnUpdate)
{
    expectFolder(R"([{"id":"d-1","name":"other.dwg"},{"id":"d-2","name":"plan.dwg"},{"id":"d-3","name":"plan.dwg"}])");
    EXPECT_TRUE(Files::UploadFilesByJob("p-1", L"f-1", {plan, roof}));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|d-2||-1"), order("p-1|f-1|顶.dwg|||-1")));
}

TEST_F(Submission, theSameNameInAnotherCaseIsAnotherFile)
{
    expectFolder(R"([{"id":"d-1","name":"Plan.dwg"},{"id":"d-2","name":"plan.DWG"}])");
    EXPECT_TRUE(Files::UploadFilesByJob("p-1", L"f-1", {plan}));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|||-1")));
}

TEST_F(Submission, ofFilesWithADatasetNamesItInEach)
{
    expectFolder(R"([{"id":"d-2","name":"plan.dwg"}])");
    EXPECT_TRUE(Files::UploadFilesWithDsByJob("p-1", L"f-1", {plan, roof}, "ds-4", 7));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|d-2|ds-4|7"), order("p-1|f-1|顶.dwg||ds-4|7")));
}

TEST_F(Submission, ofNoFilesIsRefusedWithoutARequest)
{
    EXPECT_FALSE(Files::UploadFilesByJob("p-1", L"f-1", {}));
    EXPECT_FALSE(Files::UploadFilesWithDsByJob("p-1", L"f-1", {}, "ds-4", 7));
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ICollaborationFileManager::UploadFilesWithDsByJob fileList is empty",
                                  L"E@orlo::ICollaborationFileManager::UploadFilesWithDsByJob fileList is empty"}));
    expectNothingSubmitted();
}

TEST_F(Submission, withoutTheFoldersListFilesAreTakenForNew)
{
    platform.expect("GET", "/v2/projects/p-1").reply(404, "gone");
    EXPECT_TRUE(Files::UploadFilesByJob("p-1", L"f-1", {plan}));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|||-1")));
    EXPECT_TRUE(log.has(L"E@orlo::CollaborationFileManager::GetFileInfoInFolder currentProject is empty"));
}

TEST_F(Submission, aFileThatCannotBeCopiedIsRefused)
{
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", L"/no/such/file.dwg"));
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", plan, L"../plan.dwg"));
    EXPECT_FALSE(Files::UpdateFileByJob("p-1", L"f-1", L"d-3", L""));
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ICollaborationFileManager::UploadFileByJob copy file failed",
                                  L"E@orlo::ICollaborationFileManager::UploadFileByJob copy file failed",
                                  L"E@orlo::ICollaborationFileManager::UpdateFileByJob copy file failed"}));
    expectNothingSubmitted();
}

TEST_F(Submission, aNameOrAProjectWithANulIsRefused)
{
    const std::wstring file = localFile("plan.dwg", "bytes");
    const std::wstring victim = localFile("victim", "untouched");
    const std::wstring nul(1, L'\0');
    const std::wstring name = L"../../../Local/victim" + nul + L"/../../../Jobs/p-1/x";
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", file, name));
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", file + nul));
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ICollaborationFileManager::UploadFileByJob copy file failed",
                                  L"E@orlo::ICollaborationFileManager::UploadFileByJob copy file failed"}));
    EXPECT_FALSE(Files::UploadFileByJob(std::string("../Local/victim\0/../../Jobs/p-1", 32), L"f-1", file));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
    EXPECT_EQ(readFile(fs::u8path(utils::toString(victim))), "untouched");
}

TEST_F(Submission, whereTheFolderCannotBeMadeIsRefused)
{
    EXPECT_FALSE(Files::UploadFileByJob("../p-1", L"f-1", plan));
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::CopyFileToTempPath 创建文件路径失败",
                                  L"E@orlo::ICollaborationFileManager::UploadFileByJob copy file failed"}));
    expectNothingSubmitted();
}

TEST_F(Submission, ofFilesEndsAtTheFirstThatCannotBeCopied)
{
    expectFolder("[]");
    EXPECT_FALSE(Files::UploadFilesByJob("p-1", L"f-1", {plan, L"/no/such/file.dwg", roof}));
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|||-1")));
    EXPECT_EQ(jobsInHand(), 1u);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ICollaborationFileManager::UploadFilesWithDsByJob copy file failed"});
}

TEST_F(Submission, aJobThatCannotBeSavedIsNotAcceptedAndLeavesNoCopy)
{
    stopManager();
    fs::remove_all(jobsFolder());
    fs::create_directories(jobsFolder() / "jobs.db");
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", plan));
    EXPECT_TRUE(log.has(L"E@orlo::ICollaborationFileManager::UploadFileByJob the job can't be saved"));
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Submission, withoutAJobManagerIsAFailureWithTheJobSaved)
{
    stopManager();
    log.clear();
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", plan));
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", plan, L"b.dwg"));
    EXPECT_FALSE(Files::UpdateFileByJob("p-1", L"f-1", L"d-3", plan));
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::ICollaborationFileManager::UploadFileByJob pMgr is null",
                                  L"E@orlo::ICollaborationFileManager::UploadFileByJob pMgr is null",
                                  L"E@orlo::ICollaborationFileManager::UpdateFileByJob pMgr is null"}));
    EXPECT_EQ(rows().size(), 3u);
    EXPECT_EQ(copies().size(), 3u);
}

TEST_F(Submission, ofFilesWithoutAJobManagerEndsAtTheFirst)
{
    stopManager();
    log.clear();
    expectFolder("[]");
    EXPECT_FALSE(Files::UploadFilesByJob("p-1", L"f-1", {plan, roof}));
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::ICollaborationFileManager::UploadFilesWithDsByJob pMgr is null"});
    EXPECT_THAT(orders(), ElementsAre(order("p-1|f-1|plan.dwg|||-1")));
    EXPECT_THAT(copies(), ElementsAre("*/plan.dwg"));
}

TEST_F(Submission, ofFilesEndsWhereTheJobManagerGoesInTheMiddle)
{
    stopManager();
    FaultyFiles files;
    startManager();
    ASSERT_TRUE(Files::UploadFileByJob("p-1", L"f-1", plan));
    files.reset();
    ASSERT_TRUE(Files::UploadFileByJob("p-1", L"f-1", plan));
    const int stepsOfOne = files.steps();
    ASSERT_GT(stepsOfOne, 1);
    files.reset();
    std::thread stopping;
    // It goes while the second file's job is being saved.
    files.callAt(stepsOfOne + 1, [&stopping] {
        std::thread([] { IJobManager::Stop(); }).swap(stopping);
        EXPECT_TRUE(waitUntil([] { return IJobManager::Get() == nullptr; }));
    });
    expectFolder("[]");
    EXPECT_FALSE(Files::UploadFilesByJob("p-1", L"f-1", {plan, roof, plan}));
    letNoMoreJobsRun();
    gate->open();
    ASSERT_TRUE(stopping.joinable());
    stopping.join();
    EXPECT_EQ(log.count(L"E@orlo::ICollaborationFileManager::UploadFilesWithDsByJob pMgr is null"), 1u);
    EXPECT_THAT(copiedBytes(), ElementsAre("plan's bytes", "plan's bytes", "plan's bytes", "roof's bytes"));
}

TEST_F(Submission, doesNotCareWhatBecomesOfTheFile)
{
    ASSERT_TRUE(Files::UploadFileByJob("p-1", L"f-1", plan));
    ASSERT_TRUE(Files::UploadFileByJob("p-1", L"f-1", roof));
    writeFile(localPath("plan.dwg"), "changed");
    fs::remove(localPath("顶.dwg"));
    EXPECT_THAT(copiedBytes(), ElementsAre("plan's bytes", "roof's bytes"));
}

} // namespace
} // namespace orlo::test
