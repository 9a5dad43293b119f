#include "UploadJobsTest.h"
#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/LocalFolders.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

#include <mutex>

// Files handed to jobs, run by the real manager, on a platform that keeps them.
namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Files = ICollaborationFileManager;

class UploadJobsPlatform : public testing::Test
{
protected:
    void TearDown() override { IJobManager::Stop(); }

    void start(unsigned workers = 2)
    {
        JobManagerOptions options;
        options.workers = workers;
        options.onEvent = [this](const JobEvent& event) { keep(event); };
        ASSERT_TRUE(IJobManager::Start(options));
    }
    /// Waits for all jobs, then for all events.
    void finish()
    {
        EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
        EXPECT_TRUE(IJobManager::Stop());
    }

    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories(place.host.folder().path("Local"));
        writeFile(place.host.folder().path("Local") / std::filesystem::u8path(name), content);
        return place.host.folder().wide("Local/" + name);
    }
    std::vector<std::string> rows() const { return sqlTexts(jobs() / "jobs.db", "SELECT json FROM job"); }
    /// The files of jobs: all but the database and what belongs to it.
    std::vector<std::string> copies() const { return filesBelow(jobs() / "p-1"); }
    std::filesystem::path jobs() const { return place.host.folder().path("Jobs"); }

    PlatformHost place;
    RetryLimit retries{3};
    LogCapture log;

    std::vector<int> states;
    std::vector<std::shared_ptr<IJobEntity>> ended;
    std::vector<ErrorCode> errors;

private:
    void keep(const JobEvent& event)
    {
        const std::lock_guard lock(m_mutex);
        states.push_back(static_cast<int>(event.state));
        if (event.kind == JobEvent::Kind::Ended) {
            ended.push_back(event.job);
            errors.push_back(event.error);
        }
    }

    std::mutex m_mutex;
};

TEST_F(UploadJobsPlatform, anUploadBecomesADatasetWithItsBytes)
{
    const std::string bytes = incompressible(300000);
    start();
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", localFile("总图.dwg", bytes)));
    finish();
    EXPECT_TRUE(place.holds("总图.dwg", bytes));
    EXPECT_THAT(place.datasets("总图.dwg"), SizeIs(1));
    EXPECT_THAT(states, ElementsAre(0, 1, 2));
    EXPECT_TRUE(errors.at(0).isClear());
    EXPECT_EQ(std::dynamic_pointer_cast<UploadJobEntity>(ended.at(0))->future().get().message, L"upload file success");
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(UploadJobsPlatform, aRunThatStopCutsOffIsRepeatedByTheNextStart)
{
    platform::Fault stall;
    stall.kind = platform::FaultKind::Delay;
    stall.path = "/blobs/";
    stall.prefix = true;
    stall.delayMilliseconds = 60000;
    const int fault = place.platform.faults().add(stall);
    JobManagerOptions impatient;
    impatient.stopWithin = std::chrono::milliseconds(1);
    ASSERT_TRUE(IJobManager::Start(impatient));
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", localFile("plan.dwg", "bytes")));
    ASSERT_TRUE(waitUntil([&] { return place.platform.faults().count(fault) == 1; }));
    const std::shared_ptr<IJobEntity> job = IJobManager::Get()->GetJobs().at(0);
    EXPECT_FALSE(IJobManager::Stop());
    EXPECT_TRUE(log.has(L"W [ORLOSDK]jobs were cut off by the stop of the job manager; the next start runs them again"));
    EXPECT_EQ(job->GetStatus(), JobState::Waiting);
    EXPECT_EQ(std::dynamic_pointer_cast<UploadJobEntity>(job)->future().wait_for(std::chrono::seconds(0)), std::future_status::timeout)
        << "a run that was cut off has no outcome";
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(copies(), SizeIs(1));
    start();
    finish();
    EXPECT_TRUE(place.holds("plan.dwg", "bytes"));
    EXPECT_THAT(place.datasets("plan.dwg"), SizeIs(1));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(UploadJobsPlatform, anUpdateBecomesAVersionOfTheDataset)
{
    const std::string dataset = place.addDataset("plan.dwg");
    start();
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", utils::toWstring(dataset), localFile("plan.dwg", "first")));
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)));
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", utils::toWstring(dataset), localFile("plan.dwg", "the second")));
    finish();
    EXPECT_THAT(place.datasets("plan.dwg"), ElementsAre(dataset));
    EXPECT_EQ(place.versions(dataset), 2);
    EXPECT_TRUE(place.holds("plan.dwg", "the second"));
    EXPECT_THAT(states, ElementsAre(0, 1, 2, 0, 1, 2));
}

TEST_F(UploadJobsPlatform, ofManyFilesThoseWithAKnownNameAreUpdates)
{
    const std::string known = place.addDataset("known.dwg");
    start(4);
    EXPECT_TRUE(Files::UploadFilesByJob(
        "p-1", L"f-1", {localFile("known.dwg", "known's bytes"), localFile("Known.dwg", "another's"), localFile("new.dwg", "new's")}));
    finish();
    EXPECT_THAT(place.datasets("known.dwg"), ElementsAre(known));
    EXPECT_TRUE(place.holds("known.dwg", "known's bytes"));
    EXPECT_TRUE(place.holds("Known.dwg", "another's"));
    EXPECT_TRUE(place.holds("new.dwg", "new's"));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(UploadJobsPlatform, aRowWhoseCopyHasANulInItsPathFailsAndHarmsNobody)
{
    localFile("victim", "untouched");
    UploadFileJobEntity("p-1", L"f-1", L"COPY", L"plan.dwg", "", "", -1).save();
    sqlRun(jobs() / "jobs.db", "UPDATE job SET json = replace(json, 'COPY', '" + jobs().u8string() +
                                   R"(/../Local/victim\u0000/../../Jobs/p-1/folder/plan.dwg'))");
    ASSERT_THAT(rows(), ElementsAre(testing::HasSubstr("victim\\u0000/..")));
    start();
    finish();
    EXPECT_THAT(states, ElementsAre(0, 1, 3));
    EXPECT_EQ(std::dynamic_pointer_cast<UploadJobEntity>(ended.at(0))->future().get().message, L"上传文件失败：");
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_TRUE(place.contents().empty());
    EXPECT_EQ(readFile(place.host.folder().path("Local/victim")), "untouched");
}

TEST_F(UploadJobsPlatform, aLocalRootWithANulTakesNoJobs)
{
    const std::wstring file = localFile("plan.dwg", "bytes");
    utils::setLocalRoot(place.host.folder().wide() + std::wstring(L"\0/x", 3));
    EXPECT_FALSE(IJobManager::Start({}));
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", file));
    EXPECT_FALSE(UploadFileJobEntity().save());
    utils::setLocalRoot(place.host.folder().wide());
    EXPECT_EQ(filesBelow(place.host.folder().path()), std::vector<std::string>{"Local/plan.dwg"});
}

TEST_F(UploadJobsPlatform, withADatasetEveryFileIsBoundToItsVersion)
{
    const std::string model = place.addDataset("model");
    start();
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", utils::toWstring(model), localFile("model", "of the model")));
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)));
    EXPECT_TRUE(Files::UploadFilesWithDsByJob("p-1", L"f-1", {localFile("a.dwg", "a's"), localFile("b.dwg", "b's")}, model, 1));
    finish();
    for (const char* name : {"a.dwg", "b.dwg"}) {
        SCOPED_TRACE(name);
        ErrorCode error;
        std::vector<RelatedDatasetInfo> related;
        ASSERT_TRUE(IFileManager::QueryFileRelatedDatasets(place.datasets(name).at(0), 1, related, error));
        ASSERT_THAT(related, SizeIs(1));
        EXPECT_EQ(related[0].datasetId, utils::toWstring(model));
        EXPECT_EQ(related[0].datasetVersion, 1);
    }
    EXPECT_THAT(errors, SizeIs(3));
}

TEST_F(UploadJobsPlatform, aBindingToNothingFailsTheJobThoughTheFileIsThere)
{
    start();
    EXPECT_TRUE(Files::UploadFilesWithDsByJob("p-1", L"f-1", {localFile("a.dwg", "a's")}, "no such dataset", 1));
    finish();
    EXPECT_TRUE(place.holds("a.dwg", "a's"));
    EXPECT_THAT(states, ElementsAre(0, 1, 3));
    EXPECT_EQ(errors.at(0).GetValue(), exceptionValue);
    EXPECT_EQ(errors.at(0).GetErrorMessage().rfind(L"上传文件失败：", 0), 0u) << utils::toString(errors.at(0).GetErrorMessage());
    const auto reason = std::dynamic_pointer_cast<HttpError>(errors.at(0).GetCategory());
    ASSERT_NE(reason, nullptr);
    EXPECT_EQ(reason->GetCode(), 10011);
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(UploadJobsPlatform, whatWasSavedWithoutAManagerIsUploadedByTheNext)
{
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", localFile("图.dwg", "bytes")));
    std::filesystem::remove(place.host.folder().path("Local/图.dwg"));
    EXPECT_THAT(rows(), SizeIs(1));
    start();
    finish();
    EXPECT_TRUE(place.holds("图.dwg", "bytes"));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(UploadJobsPlatform, aRowThatCannotBeReadStaysWithItsCopyAndHoldsNobodyUp)
{
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", localFile("broken.dwg", "broken's")));
    EXPECT_FALSE(Files::UploadFileByJob("p-1", L"f-1", localFile("good.dwg", "good's")));
    sqlRun(jobs() / "jobs.db", "UPDATE job SET json = json_remove(json, '$.cloudifyFile.dsId') WHERE json LIKE '%broken.dwg%'");
    start();
    finish();
    EXPECT_TRUE(log.has(L"E@orlo::UploadFileJobEntity::fromJsonForCloudify parse cloudify m_localFilePath failed."));
    EXPECT_TRUE(place.holds("good.dwg", "good's"));
    EXPECT_THAT(place.datasets("broken.dwg"), IsEmpty());
    EXPECT_THAT(rows(), ElementsAre(testing::HasSubstr("broken.dwg")));
    EXPECT_THAT(copies(), ElementsAre(testing::EndsWith("/broken.dwg")));
}

TEST_F(UploadJobsPlatform, aTemplateJobOfAnEarlierProcessTakesTheWayOfAFile)
{
    std::wstring copy;
    ASSERT_TRUE(CopyFileToTempPath(localFile("样.dwt", "bytes"), "p-1", L"", copy));
    UploadFileJobEntity job("p-1", L"f-1", copy, L"样板", "", "", -1);
    job.setTemplate(L"ZOK");
    ASSERT_TRUE(job.save());
    start();
    finish();
    EXPECT_TRUE(place.holds("样.dwt", "bytes"));
}

TEST_F(UploadJobsPlatform, whatThePlatformRefusesIsNotTriedAgain)
{
    platform::Fault fault;
    fault.path = "/v2/dataSets";
    fault.status = 403;
    const int id = place.platform.faults().add(fault);
    start();
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", localFile("a.dwg", "bytes")));
    finish();
    EXPECT_EQ(place.platform.faults().count(id), 1);
    EXPECT_THAT(states, ElementsAre(0, 1, 3));
    EXPECT_THAT(place.datasets("a.dwg"), IsEmpty());
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(copies(), IsEmpty());
    start();
    finish();
    EXPECT_THAT(place.datasets("a.dwg"), IsEmpty());
}

TEST_F(UploadJobsPlatform, noSecretIsLogged)
{
    start();
    EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", localFile("a.dwg", "bytes")));
    finish();
    EXPECT_TRUE(place.holds("a.dwg", "bytes"));
    EXPECT_FALSE(log.holds(L"token-secret-1"));
    EXPECT_FALSE(log.holds(L"signature="));
}

} // namespace
} // namespace orlo::test
