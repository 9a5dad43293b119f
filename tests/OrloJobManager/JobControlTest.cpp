#include "JobsTest.h"
#include "ToldEvents.h"

#include <BaseCommon/Interruption.h>
#include <BaseCommon/ProgressMeter.h>
#include <OrloAuth/UserSession.h>
#include <OrloJobManager/IFileJob.h>

#include <atomic>
#include <map>
#include <mutex>
#include <random>
#include <stdexcept>
#include <thread>

// Retry, Remove, Pause and Resume; tokens and progress.
namespace orlo::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = JobEvent::Kind;

constexpr milliseconds longTime{60000};

/// Runs until it is broken off, as an operation of the network does.
bool runUntilBrokenOff(TestJob&)
{
    Interruption::current()->waitFor(longTime);
    return false;
}

/// A job with a file, that tells whether it was cancelled.
class FileJob : public TestJob, public IFileJob
{
public:
    using TestJob::TestJob;

    const std::string& GetProjectId() const override { return m_projectId; }
    std::wstring GetFileName() const override { return L"图.dwg"; }
    void Cancelled() override { ++cancelled; }

    std::atomic<int> cancelled{0};

private:
    const std::string m_projectId = "p-1";
};

class JobControl : public JobsTest
{
protected:
    JobManagerOptions listening(unsigned count = 1)
    {
        JobManagerOptions options = workers(count);
        told.listen(options);
        return options;
    }
    JobManagerOptions keeping()
    {
        JobManagerOptions options = listening();
        options.firstPause = options.longestPause = std::chrono::hours(1);
        options.onFailure = [](const IJobEntity&, const ErrorCode&) { return FailedJob::Keep; };
        return options;
    }
    /// All jobs have this token.
    JobManagerOptions withToken(JobManagerOptions options) const
    {
        options.cancelTokenOf = [token = token](const IJobEntity&) { return token; };
        return options;
    }
    static IJobManager& manager() { return *IJobManager::Get(); }
    static std::shared_ptr<FileJob> submitFile(const std::string& name)
    {
        const auto job = std::make_shared<FileJob>(name);
        EXPECT_TRUE(job->save());
        manager().AddJob(job);
        return job;
    }
    bool isRunning(const IJobEntity& job) const
    {
        return waitUntil([&] { return job.GetStatus() == JobState::Running; });
    }
    void expectCancelled(const IJobEntity& job) const
    {
        ASSERT_TRUE(told.waitFor(Kind::Ended));
        const JobEvent ended = told.last(Kind::Ended);
        EXPECT_EQ(ended.jobId, job.JobId());
        EXPECT_EQ(ended.state, JobState::Failed);
        EXPECT_TRUE(isCancelled(ended.error));
        EXPECT_EQ(job.GetStatus(), JobState::Failed);
        EXPECT_TRUE(waitUntil([&] { return !manager().GetJob(job.JobId()); }));
        EXPECT_THAT(rows(), IsEmpty());
    }

    ToldEvents told;
    const CancelToken token;
};

TEST_F(JobControl, anUnknownJobIsToldSo)
{
    ASSERT_TRUE(IJobManager::Start(listening()));
    EXPECT_FALSE(manager().Retry("none"));
    EXPECT_FALSE(manager().Remove("none"));
    EXPECT_FALSE(manager().Pause("none"));
    EXPECT_FALSE(manager().Resume("none"));
    EXPECT_FALSE(manager().GetJobDetails("none"));
    IJobManager* const stopped = IJobManager::Get();
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_FALSE(stopped->Remove("none"));
    EXPECT_FALSE(stopped->GetJobDetails("none"));
}

TEST_F(JobControl, aWaitingJobIsRemoved)
{
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(listening()));
    submit("first");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    const auto job = submitFile("second");
    EXPECT_TRUE(manager().Remove(job->JobId()));
    EXPECT_EQ(job->cancelled, 1);
    EXPECT_EQ(manager().GetJob(job->JobId()), nullptr) << "at once";
    EXPECT_THAT(rows(), ElementsAre("first"));
    gate->open();
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(TestJob::ran(), ElementsAre("first"));
    EXPECT_THAT(told.kinds(), ElementsAre(Kind::Added, Kind::Started, Kind::Added, Kind::Ended, Kind::Ended));
}

TEST_F(JobControl, aRunningJobIsBrokenOffAndRemoved)
{
    TestJob::behave(runUntilBrokenOff);
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = submitFile("roof");
    ASSERT_TRUE(isRunning(*job));
    EXPECT_TRUE(manager().Remove(job->JobId()));
    expectCancelled(*job);
    EXPECT_EQ(job->cancelled, 1);
    EXPECT_EQ(told.count(Kind::Kept), 0u) << "nobody was asked";
}

TEST_F(JobControl, whatSucceedsAllTheSameHasSucceeded)
{
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(listening()));
    const auto job = submitFile("roof");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_TRUE(manager().Remove(job->JobId()));
    gate->open();
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_EQ(told.last(Kind::Ended).state, JobState::Succeeded);
    EXPECT_EQ(job->cancelled, 0);
}

TEST_F(JobControl, aRestingJobIsRemoved)
{
    TestJob::behave([](TestJob&) { return false; });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = submitFile("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    EXPECT_TRUE(manager().Remove(job->JobId()));
    expectCancelled(*job);
    EXPECT_THAT(sqlTexts(database(), "SELECT count(*) FROM kept"), ElementsAre("0"));
}

TEST_F(JobControl, aPausedJobIsRemoved)
{
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(listening()));
    submit("first");
    const auto job = submitFile("second");
    EXPECT_TRUE(manager().Pause(job->JobId()));
    EXPECT_TRUE(manager().Remove(job->JobId()));
    EXPECT_EQ(job->cancelled, 1);
    EXPECT_FALSE(manager().Resume(job->JobId()));
    gate->open();
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(TestJob::ranCount(), 1u);
}

TEST_F(JobControl, aPausedJobDoesNotStartBeforeResume)
{
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(listening()));
    submit("first");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    const auto paused = submit("paused");
    submit("third");
    EXPECT_TRUE(manager().Pause(paused->JobId()));
    EXPECT_TRUE(manager().Pause(paused->JobId()));
    gate->open();
    EXPECT_TRUE(becomesIdle()) << "a paused job doesn't count";
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "third"));
    EXPECT_TRUE(manager().GetJobDetails(paused->JobId())->isPaused);
    EXPECT_THAT(rows(), ElementsAre("paused"));
    EXPECT_TRUE(manager().Resume(paused->JobId()));
    EXPECT_TRUE(manager().WaitForJob(paused->JobId(), std::chrono::seconds(20)));
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "third", "paused"));
}

TEST_F(JobControl, aRunningJobIsBrokenOffAndWaits)
{
    TestJob::behave(runUntilBrokenOff);
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = submit("roof");
    ASSERT_TRUE(isRunning(*job));
    EXPECT_TRUE(manager().Pause(job->JobId()));
    ASSERT_TRUE(told.waitFor(Kind::CutOff));
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(job->GetStatus(), JobState::Waiting);
    EXPECT_EQ(told.count(Kind::Kept), 0u);
    TestJob::behave(nullptr);
    EXPECT_TRUE(manager().Resume(job->JobId()));
    EXPECT_TRUE(manager().WaitForJob(job->JobId(), std::chrono::seconds(20)));
    EXPECT_EQ(TestJob::ranCount(), 2u);
}

TEST_F(JobControl, aJobThatIsResumedBeforeItsRunCameBackRunsAgain)
{
    const auto gate = std::make_shared<Gate>();
    std::atomic<int> runs{0};
    TestJob::behave([&, gate](TestJob& job) {
        if (++runs > 1)
            return job.remove();
        gate->wait();
        return false;
    });
    ASSERT_TRUE(IJobManager::Start(listening()));
    const auto job = submit("roof");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_TRUE(manager().Pause(job->JobId()));
    EXPECT_TRUE(manager().Resume(job->JobId()));
    gate->open();
    EXPECT_TRUE(manager().WaitForJob(job->JobId(), std::chrono::seconds(20)));
    EXPECT_EQ(runs, 2);
}

TEST_F(JobControl, aRestGoesOnBehindAPauseUnlessItIsRetried)
{
    TestJob::behave([](TestJob&) { return false; });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    EXPECT_TRUE(manager().Pause(job->JobId()));
    EXPECT_TRUE(manager().Resume(job->JobId()));
    EXPECT_TRUE(manager().GetJobDetails(job->JobId())->nextRun);
    EXPECT_TRUE(manager().Pause(job->JobId()));
    EXPECT_TRUE(manager().Retry(job->JobId()));
    EXPECT_TRUE(becomesIdle());
    EXPECT_FALSE(manager().GetJobDetails(job->JobId())->nextRun);
    EXPECT_EQ(TestJob::ranCount(), 1u) << "it is paused";
    EXPECT_TRUE(manager().Resume(job->JobId()));
    EXPECT_TRUE(told.waitFor(Kind::Kept, 2));
}

TEST_F(JobControl, theNextStartKnowsNothingOfAPause)
{
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(listening()));
    submit("first");
    const auto job = submit("paused");
    EXPECT_TRUE(manager().Pause(job->JobId()));
    gate->open();
    EXPECT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    ASSERT_TRUE(IJobManager::Start(listening()));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
}

TEST_F(JobControl, detailsTellOfFileProjectAndFailures)
{
    TestJob::behave([](TestJob&) { return false; });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = submitFile("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    const auto details = manager().GetJobDetails(job->JobId());
    ASSERT_TRUE(details);
    EXPECT_EQ(details->jobId, job->JobId());
    EXPECT_EQ(details->fileName, L"图.dwg");
    EXPECT_EQ(details->projectId, "p-1");
    EXPECT_EQ(details->attempts, 1u);
    EXPECT_EQ(details->state, JobState::Waiting);
    EXPECT_FALSE(details->isPaused);
    EXPECT_EQ(details->lastFailure.GetErrorMessage(), L"the job failed");
    EXPECT_TRUE(details->nextRun);
    const auto plain = submit("plain");
    ASSERT_TRUE(told.waitFor(Kind::Kept, 2));
    EXPECT_EQ(manager().GetJobDetails(plain->JobId())->fileName, L"");
}

// --- tokens

TEST_F(JobControl, aTokenCancelsARun)
{
    TestJob::behave(runUntilBrokenOff);
    ASSERT_TRUE(IJobManager::Start(withToken(keeping())));
    const auto job = submitFile("roof");
    ASSERT_TRUE(isRunning(*job));
    token.cancel();
    expectCancelled(*job);
    EXPECT_EQ(job->cancelled, 1);
}

TEST_F(JobControl, aTokenCancelsAJobThatWaits)
{
    JobManagerOptions options = withToken(listening());
    options.mayStart = [] { return false; };
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = submitFile("roof");
    token.cancel();
    expectCancelled(*job);
    EXPECT_THAT(TestJob::ran(), IsEmpty());
}

TEST_F(JobControl, aTokenCancelsAJobThatRests)
{
    TestJob::behave([](TestJob&) { return false; });
    ASSERT_TRUE(IJobManager::Start(withToken(keeping())));
    const auto job = submitFile("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    token.cancel();
    expectCancelled(*job);
}

TEST_F(JobControl, aTokenCancelsAJobThatIsPaused)
{
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(withToken(listening())));
    const auto job = submitFile("paused");
    EXPECT_TRUE(manager().Pause(job->JobId()));
    gate->open();
    ASSERT_TRUE(becomesIdle());
    token.cancel();
    EXPECT_TRUE(waitUntil([&] { return !manager().GetJob(job->JobId()); }));
}

TEST_F(JobControl, aTokenThatWasCancelledBeforeLetsNoRunBegin)
{
    token.cancel();
    ASSERT_TRUE(IJobManager::Start(withToken(listening())));
    const auto job = submitFile("roof");
    expectCancelled(*job);
    EXPECT_THAT(TestJob::ran(), IsEmpty());
}

TEST_F(JobControl, aJobOfAnEarlierProcessHasItsTokenToo)
{
    saved("roof");
    token.cancel();
    ASSERT_TRUE(IJobManager::Start(withToken(listening())));
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_TRUE(isCancelled(told.last(Kind::Ended).error));
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobControl, whatIsCutOffIsNotCancelled)
{
    TestJob::behave([](TestJob&) {
        Interruption::current()->waitFor(longTime);
        return false;
    });
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    ASSERT_TRUE(IJobManager::Start(withToken(keeping())));
    const auto job = submitFile("roof");
    ASSERT_TRUE(isRunning(*job));
    UserSession::SignOut();
    ASSERT_TRUE(told.waitFor(Kind::CutOff));
    ASSERT_TRUE(IJobManager::Stop());
    token.cancel();
    EXPECT_THAT(rows(), ElementsAre("roof"));
    EXPECT_EQ(job->cancelled, 0);
    EXPECT_EQ(told.count(Kind::Ended), 0u);
}

TEST_F(JobControl, stopWinsOverATokenAndLeavesTheRow)
{
    const auto gate = std::make_shared<Gate>();
    TestJob::behave([gate](TestJob&) {
        gate->wait();
        return false;
    });
    JobManagerOptions options = withToken(keeping());
    options.stopWithin = milliseconds(0);
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = submitFile("roof");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop()); // the run is broken off, and doesn't come back
    token.cancel();
    gate->open();
    EXPECT_TRUE(waitUntil([&] { return job->GetStatus() == JobState::Waiting; }));
    EXPECT_THAT(rows(), ElementsAre("roof"));
    EXPECT_EQ(job->cancelled, 0);
}

TEST_F(JobControl, aHostThatKnowsNoTokenLeavesTheJobWithoutOne)
{
    JobManagerOptions options = listening();
    options.cancelTokenOf = [](const IJobEntity&) -> CancelToken { throw std::runtime_error("which one?"); };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_THAT(log.lines(), ElementsAre(L"W [ORLOSDK]the token of a job can't be told, so that it has none: which one?"));
}

TEST_F(JobControl, aHostMayRemoveFromEveryEvent)
{
    TestJob::behave([](TestJob&) { return false; });
    JobManagerOptions options = keeping();
    std::atomic<int> ended{0};
    options.onEvent = [&](const JobEvent& event) {
        if (event.kind == Kind::Ended)
            ++ended;
        else
            IJobManager::Get()->Remove(event.jobId);
    };
    ASSERT_TRUE(IJobManager::Start(options));
    for (int i = 0; i < 20; ++i)
        submit("job");
    EXPECT_TRUE(waitUntil([&] { return ended == 20; }));
    EXPECT_THAT(rows(), IsEmpty());
    ASSERT_TRUE(IJobManager::Stop());
}

// Whatever is done at whatever instant, each job ends once.
TEST_F(JobControl, atRandomInstantsEachJobEndsOnce)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::atomic<int> runs{0};
    TestJob::behave([&](TestJob& job) {
        if (++runs % 3 == 0)
            return job.remove();
        Interruption::current()->waitFor(milliseconds(runs % 5));
        return false;
    });
    JobManagerOptions options = keeping();
    options.workers = 4;
    options.firstPause = options.longestPause = milliseconds(1);
    ASSERT_TRUE(IJobManager::Start(options));
    std::vector<std::string> ids;
    for (int i = 0; i < 60; ++i)
        ids.push_back(submitFile("job" + std::to_string(i))->JobId());
    const auto meddle = [&](unsigned number) {
        std::mt19937 random{seed + number};
        for (int i = 0; i < 400; ++i) {
            const std::string& id = ids[random() % ids.size()];
            switch (random() % 12) {
            case 0:
                manager().Remove(id);
                break;
            case 1:
            case 2:
                manager().Pause(id);
                break;
            case 3:
                manager().GetJobDetails(id);
                break;
            case 4:
                manager().Retry(id);
                break;
            default:
                manager().Resume(id);
            }
        }
    };
    std::thread other(meddle, 1);
    meddle(2);
    other.join();
    for (const std::string& id : ids)
        manager().Resume(id);
    for (const std::string& id : ids)
        EXPECT_TRUE(manager().WaitForJob(id, std::chrono::seconds(30)));
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(rows(), IsEmpty());
    std::map<std::string, int> ends;
    for (const JobEvent& event : told.all())
        ends[event.jobId] += event.kind == Kind::Ended ? 1 : 0;
    EXPECT_THAT(ends, SizeIs(60));
    for (const auto& [id, count] : ends)
        EXPECT_EQ(count, 1) << id;
}

// --- progress

TEST_F(JobControl, progressIsToldUpToTheLastState)
{
    TestJob::behave([](TestJob& job) {
        for (int i = 0; i < 10; ++i)
            Interruption::current()->meter()->count(ProgressMeter::Kind::ofFile, 10, 10);
        return job.remove();
    });
    std::mutex mutex;
    std::vector<Progress> reports;
    JobManagerOptions options = listening();
    options.onProgress = [&](const IJobEntity& job, const Progress& progress) {
        EXPECT_EQ(dynamic_cast<const TestJob&>(job).name, "roof");
        EXPECT_EQ(job.GetStatus(), JobState::Running) << "before the end is told";
        const std::lock_guard lock(mutex);
        reports.push_back(progress);
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    ASSERT_FALSE(reports.empty());
    EXPECT_EQ(reports.back().fileBytesDone, 100u);
    EXPECT_EQ(reports.back().bytesInAll, 100u);
}

TEST_F(JobControl, withoutAListenerNothingIsCounted)
{
    std::atomic<bool> hasMeter{true};
    TestJob::behave([&](TestJob& job) {
        hasMeter = Interruption::current()->meter() != nullptr;
        return job.remove();
    });
    ASSERT_TRUE(IJobManager::Start(listening()));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    EXPECT_FALSE(hasMeter);
}

TEST_F(JobControl, aHostMayRemoveTheJobFromItsProgress)
{
    TestJob::behave([](TestJob&) {
        Interruption::current()->meter()->count(ProgressMeter::Kind::ofFile, 1, 2);
        Interruption::current()->waitFor(longTime);
        return false;
    });
    JobManagerOptions options = listening();
    options.onProgress = [](const IJobEntity& job, const Progress&) { IJobManager::Get()->Remove(job.JobId()); };
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = submitFile("roof");
    expectCancelled(*job);
}

} // namespace
} // namespace orlo::test
