#include "OrloJobManager/ToldEvents.h"
#include "support/PlatformHost.h"
#include "support/Sql.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloNetwork/Reachability.h>
#include <OrloProjectManager/FileJob/UploadJobEntity.h>
#include <OrloProjectManager/Resources/IModuleManager.h>
#include <OrloProjectManager/Resources/ITemplateManager.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

#include <gmock/gmock.h>

#include <mutex>

// Files whose upload fails, and what becomes of them where the host keeps what may succeed later.
namespace orlo::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Files = ICollaborationFileManager;
using Kind = JobEvent::Kind;

platform::Fault statusFault(const char* path, int status, int calls = -1)
{
    platform::Fault fault;
    fault.path = path;
    fault.prefix = true;
    fault.status = status;
    fault.calls = calls;
    return fault;
}

class KeptUploadJobs : public testing::Test
{
protected:
    KeptUploadJobs() { place.platform.change(platform::addModuleCategory, {"projects", "p-1", "beam", "tree", "门", "", "c-5"}); }
    void TearDown() override { IJobManager::Stop(); }

    /// Keeps what may succeed; rests for an hour, so that a test says when it goes on.
    JobManagerOptions keeping()
    {
        JobManagerOptions options;
        options.onFailure = keepIfItMaySucceed;
        options.firstPause = options.longestPause = std::chrono::hours(1);
        told.listen(options);
        return options;
    }
    std::wstring localFile(const std::string& name, const std::string& content) const
    {
        std::filesystem::create_directories(place.host.folder().path("Local"));
        writeFile(place.host.folder().path("Local") / std::filesystem::u8path(name), content);
        return place.host.folder().wide("Local/" + name);
    }
    static void upload(const std::wstring& path) { EXPECT_TRUE(Files::UploadFileByJob("p-1", L"f-1", path)); }

    /// Goes on with the one job when the platform is well again.
    void retryTheOneJob()
    {
        place.platform.faults().clear();
        const IJobEntity::List jobs = IJobManager::Get()->GetJobs();
        ASSERT_THAT(jobs, SizeIs(1));
        EXPECT_TRUE(IJobManager::Get()->Retry(jobs.front()->JobId()));
        EXPECT_TRUE(IJobManager::Get()->WaitForJob(jobs.front()->JobId(), std::chrono::seconds(60)));
        expectNothingLeft();
    }
    /// Of jobs that have ended.
    void expectNothingLeft() const
    {
        EXPECT_THAT(rows(), IsEmpty());
        EXPECT_THAT(copies(), IsEmpty());
    }
    void expectKept() const
    {
        ASSERT_TRUE(told.waitFor(Kind::Kept));
        EXPECT_EQ(told.count(Kind::Ended), 0u);
        EXPECT_THAT(rows(), SizeIs(1));
        EXPECT_THAT(copies(), SizeIs(1));
        const auto job = std::dynamic_pointer_cast<UploadJobEntity>(told.last(Kind::Kept).job);
        EXPECT_EQ(job->future().wait_for(milliseconds(0)), std::future_status::timeout) << "it has no outcome yet";
    }
    int statusOfCause() const
    {
        const auto failure = std::dynamic_pointer_cast<HttpError>(told.last(Kind::Kept).error.GetCategory());
        return failure ? failure->GetCode() : -1;
    }

    std::filesystem::path jobs() const { return place.host.folder().path("Jobs"); }
    std::vector<std::string> rows() const { return sqlTexts(jobs() / "jobs.db", "SELECT json FROM job"); }
    std::vector<std::string> copies() const { return filesBelow(jobs() / "p-1"); }

    ToldEvents told;
    PlatformHost place;
    RetryLimit retries{0};
    LogCapture log;
};

// --- what is kept

/// Where the platform fails, with which status, and whether the job is kept.
struct FailingStep
{
    const char* name;
    const char* path;
    int status;
    bool isKept;
};

class KeptUpload : public KeptUploadJobs, public testing::WithParamInterface<FailingStep>
{};

TEST_P(KeptUpload, isKeptOrDroppedByTheStatus)
{
    place.platform.faults().add(statusFault(GetParam().path, GetParam().status));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    upload(localFile("图.dwg", "bytes"));
    if (GetParam().isKept) {
        expectKept();
        EXPECT_EQ(statusOfCause(), GetParam().status);
        retryTheOneJob();
        EXPECT_TRUE(place.holds("图.dwg", "bytes"));
        EXPECT_THAT(place.datasets("图.dwg"), SizeIs(1)) << "whatever step had failed";
        return;
    }
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_EQ(told.count(Kind::Kept), 0u);
    EXPECT_EQ(told.last(Kind::Ended).state, JobState::Failed);
    EXPECT_TRUE(waitUntil([&] { return copies().empty(); }));
    expectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(
    KeptUploadJobs, KeptUpload,
    testing::Values(FailingStep{"authority400", "/file/doc/upload", 400, false}, FailingStep{"authority401", "/file/doc/upload", 401, true},
                    FailingStep{"authority403", "/file/doc/upload", 403, false},
                    FailingStep{"authority404", "/file/doc/upload", 404, false}, FailingStep{"authority408", "/file/doc/upload", 408, true},
                    FailingStep{"authority413", "/file/doc/upload", 413, false}, FailingStep{"authority429", "/file/doc/upload", 429, true},
                    FailingStep{"authority500", "/file/doc/upload", 500, true}, FailingStep{"authority503", "/file/doc/upload", 503, true},
                    FailingStep{"bytes403", "/blobs/", 403, false}, FailingStep{"bytes500", "/blobs/", 500, true},
                    FailingStep{"dataset403", "/v2/dataSets", 403, false}, FailingStep{"dataset502", "/v2/dataSets", 502, true},
                    FailingStep{"version409", "/dataset/", 409, false}, FailingStep{"version503", "/dataset/", 503, true}),
    [](const auto& tested) { return std::string(tested.param.name); });

TEST_F(KeptUploadJobs, whereNobodyListensTheUploadIsKept)
{
    place.host.change([&](OrloConfig& config) {
        for (auto& [service, url] : config.serviceUrls)
            url = L"http://127.0.0.1:1";
    });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    upload(localFile("图.dwg", "bytes"));
    expectKept();
    place.host.change([](OrloConfig&) {});
    retryTheOneJob();
    EXPECT_TRUE(place.holds("图.dwg", "bytes"));
}

// The failed upload of an update goes on to a version that the platform refuses with 400, which says nothing of the reason.
TEST_F(KeptUploadJobs, theCauseOfAnUpdateIsItsUploads)
{
    const std::string dataset = place.addDataset("plan.dwg");
    place.platform.faults().add(statusFault("/blobs/", 503));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", utils::toWstring(dataset), localFile("plan.dwg", "bytes")));
    expectKept();
    EXPECT_EQ(statusOfCause(), 503);
    retryTheOneJob();
    EXPECT_TRUE(place.holds("plan.dwg", "bytes"));
    EXPECT_EQ(place.versions(dataset), 1);
}

TEST_F(KeptUploadJobs, anUpdateOfNothingIsDropped)
{
    ASSERT_TRUE(IJobManager::Start(keeping()));
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", L"no such dataset", localFile("plan.dwg", "bytes")));
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_EQ(told.count(Kind::Kept), 0u);
}

TEST_F(KeptUploadJobs, aCopyThatIsGoneDropsTheJobOfAnUpdateToo)
{
    const std::string dataset = place.addDataset("plan.dwg");
    JobManagerOptions options = keeping();
    bool mayStart = false;
    std::mutex mutex;
    options.mayStart = [&] {
        const std::lock_guard lock(mutex);
        return mayStart;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    EXPECT_TRUE(Files::UpdateFileByJob("p-1", L"f-1", utils::toWstring(dataset), localFile("plan.dwg", "bytes")));
    upload(localFile("new.dwg", "bytes"));
    std::filesystem::remove_all(jobs() / "p-1");
    {
        const std::lock_guard lock(mutex);
        mayStart = true;
    }
    ASSERT_TRUE(told.waitFor(Kind::Ended, 2));
    EXPECT_EQ(told.count(Kind::Kept), 0u);
    ASSERT_TRUE(IJobManager::Stop());
}

TEST_F(KeptUploadJobs, aBindingThatFailsIsRepeatedWithoutASecondUpload)
{
    const std::string model = place.addDataset("model");
    ASSERT_TRUE(place.addVersion(model));
    place.platform.faults().add(statusFault("/dataset/dwg/binding", 503));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    EXPECT_TRUE(Files::UploadFilesWithDsByJob("p-1", L"f-1", {localFile("a.dwg", "a's")}, model, 1));
    expectKept();
    retryTheOneJob();
    ASSERT_THAT(place.datasets("a.dwg"), SizeIs(1));
    EXPECT_EQ(place.versions(place.datasets("a.dwg")[0]), 1);
    ErrorCode error;
    std::vector<RelatedDatasetInfo> related;
    EXPECT_TRUE(IFileManager::QueryFileRelatedDatasets(place.datasets("a.dwg").at(0), 1, related, error));
    EXPECT_THAT(related, SizeIs(1));
}

TEST_F(KeptUploadJobs, aTemplateIsKept)
{
    place.platform.faults().add(statusFault("/blobs/", 503));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    ErrorCode error;
    EXPECT_TRUE(ITemplateManager::Get()->UploadTemplateByJob(L"样板", L"p-1", localFile("样.dwt", "bytes"), SpecialtyType::ZIM, error));
    expectKept();
    EXPECT_EQ(statusOfCause(), 503);
    retryTheOneJob();
    std::vector<SamplePlate> templates;
    EXPECT_TRUE(ITemplateManager::Get()->GetAllTemplatesOfProject(L"p-1", templates, error));
    EXPECT_THAT(templates, SizeIs(1));
}

TEST_F(KeptUploadJobs, aModuleIsKept)
{
    place.platform.faults().add(statusFault("/blobs/", 503));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    ErrorCode error;
    EXPECT_TRUE(IModuleManager::Get()->UploadModuleByJob(L"projects", L"p-1", L"beam", L"c-5", SpecialtyType::ZOK, L"m-1",
                                                         localFile("门.vmd", "bytes"), L"", error));
    expectKept();
    EXPECT_EQ(statusOfCause(), 503);
    retryTheOneJob();
    EXPECT_THAT(place.platform.ask(platform::storedModules), SizeIs(1));
}

TEST_F(KeptUploadJobs, detailsTellTheFileAndTheProject)
{
    place.platform.faults().add(statusFault("/blobs/", 503));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    upload(localFile("图.dwg", "bytes"));
    expectKept();
    const auto details = IJobManager::Get()->GetJobDetails(told.last(Kind::Kept).jobId);
    ASSERT_TRUE(details);
    EXPECT_EQ(details->fileName, L"图.dwg");
    EXPECT_EQ(details->projectId, "p-1");
    EXPECT_EQ(details->attempts, 1u);
    EXPECT_TRUE(details->nextRun);
}

TEST_F(KeptUploadJobs, theConditionHoldsUploadsBackUntilThePlatformIsThere)
{
    JobManagerOptions options = keeping();
    options.mayStart = http::isSignedInAndOnline;
    place.host.change([&](OrloConfig& config) { config.serviceUrls[L"project"] = L"http://127.0.0.1:1"; });
    ASSERT_TRUE(IJobManager::Start(options));
    upload(localFile("图.dwg", "bytes"));
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(20)));
    EXPECT_EQ(told.count(Kind::Started), 0u);
    place.host.change([](OrloConfig&) {});
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_TRUE(place.holds("图.dwg", "bytes"));
    EXPECT_EQ(told.count(Kind::Kept), 0u);
}

// --- cancelling and progress

class CancelledUploadJobs : public KeptUploadJobs
{
protected:
    /// Holds an upload up when a part of it has come.
    int stall()
    {
        platform::Fault stall;
        stall.kind = platform::FaultKind::Stall;
        stall.path = "/blobs/";
        stall.prefix = true;
        stall.method = "PUT";
        stall.bytes = 1 << 20;
        stall.ofRequest = true;
        stall.delayMilliseconds = 100000;
        return place.platform.faults().add(stall);
    }
    /// Begins an upload that hangs.   Returns: its job.
    std::shared_ptr<UploadJobEntity> uploadThatHangs()
    {
        const int fault = stall();
        upload(localFile("图.dwg", std::string(3 << 20, 'x')));
        EXPECT_TRUE(waitUntil([&] { return place.platform.faults().count(fault) == 1; }));
        return std::dynamic_pointer_cast<UploadJobEntity>(told.last(Kind::Started).job);
    }
    void expectCancelled(const UploadJobEntity& job)
    {
        ASSERT_TRUE(told.waitFor(Kind::Ended));
        EXPECT_EQ(told.last(Kind::Ended).state, JobState::Failed);
        EXPECT_TRUE(isCancelled(told.last(Kind::Ended).error));
        EXPECT_TRUE(isCancelled(job.ErrorInfo()));
        ASSERT_EQ(job.future().wait_for(milliseconds(0)), std::future_status::ready);
        expectOutcome(job.future().get(), false, 5555, L"cancelled");
        EXPECT_EQ(told.count(Kind::Kept), 0u);
        expectNothingLeft();
        EXPECT_THAT(place.datasets("图.dwg"), IsEmpty());
    }
};

TEST_F(CancelledUploadJobs, aTokenEndsARunningUpload)
{
    const CancelToken token;
    JobManagerOptions options = keeping();
    options.cancelTokenOf = [token](const IJobEntity&) { return token; };
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = uploadThatHangs();
    const auto begin = std::chrono::steady_clock::now();
    token.cancel();
    expectCancelled(*job);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20)) << "the server would take a hundred";
}

TEST_F(CancelledUploadJobs, removeEndsARunThatHangs)
{
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = uploadThatHangs();
    EXPECT_TRUE(IJobManager::Get()->Remove(job->JobId()));
    expectCancelled(*job);
}

TEST_F(CancelledUploadJobs, removeOfAKeptJobTakesItsCopyAtOnce)
{
    place.platform.faults().add(statusFault("/file/doc/upload", 503));
    ASSERT_TRUE(IJobManager::Start(keeping()));
    upload(localFile("图.dwg", "bytes"));
    expectKept();
    const auto job = std::dynamic_pointer_cast<UploadJobEntity>(told.last(Kind::Kept).job);
    EXPECT_TRUE(IJobManager::Get()->Remove(job->JobId()));
    expectNothingLeft();
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_TRUE(isCancelled(job->ErrorInfo()));
    EXPECT_EQ(job->future().wait_for(milliseconds(0)), std::future_status::ready);
}

TEST_F(CancelledUploadJobs, pauseBreaksAnUploadOffAndResumeBeginsItAnew)
{
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = uploadThatHangs();
    EXPECT_TRUE(IJobManager::Get()->Pause(job->JobId()));
    ASSERT_TRUE(told.waitFor(Kind::CutOff));
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(copies(), SizeIs(1));
    EXPECT_TRUE(IJobManager::Get()->Resume(job->JobId()));
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_EQ(told.last(Kind::Ended).state, JobState::Succeeded);
    EXPECT_TRUE(place.holds("图.dwg", std::string(3 << 20, 'x')));
}

TEST_F(CancelledUploadJobs, progressEndsWithAllOfTheFile)
{
    std::mutex mutex;
    std::vector<Progress> reports;
    JobManagerOptions options = keeping();
    options.onProgress = [&](const IJobEntity&, const Progress& progress) {
        const std::lock_guard lock(mutex);
        reports.push_back(progress);
    };
    ASSERT_TRUE(IJobManager::Start(options));
    constexpr std::size_t size = 5000000;
    upload(localFile("图.dwg", incompressible(size)));
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    ASSERT_TRUE(IJobManager::Stop());
    ASSERT_FALSE(reports.empty());
    const Progress& last = reports.back();
    EXPECT_EQ(last.bytesDone, last.bytesInAll);
    EXPECT_EQ(last.fileBytesDone, size);
    EXPECT_EQ(last.fileBytesInAll, size);
}

} // namespace
} // namespace orlo::test
