#include "JobsTest.h"
#include "ToldEvents.h"
#include "support/ChildProcess.h"

#include <BaseCommon/RequestError.h>

#include <atomic>
#include <mutex>
#include <stdexcept>

// Jobs whose run failed, and that the host keeps.
namespace orlo::test {
namespace {

using std::chrono::milliseconds;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = JobEvent::Kind;

/// Fails without dropping the row.
bool failing(TestJob&)
{
    return false;
}

class JobKeep : public JobsTest
{
protected:
    JobManagerOptions keeping(FailedJob answer = FailedJob::Keep)
    {
        JobManagerOptions options = workers(1);
        options.firstPause = milliseconds(1);
        options.longestPause = milliseconds(4);
        options.onFailure = [this, answer](const IJobEntity& job, const ErrorCode& error) {
            const std::lock_guard lock(m_mutex);
            m_asked.push_back(dynamic_cast<const TestJob&>(job).name);
            m_causes.push_back(error);
            return answer;
        };
        told.listen(options);
        return options;
    }
    /// Rests for an hour behind its first failure.
    JobManagerOptions keepingLong()
    {
        JobManagerOptions options = keeping();
        options.firstPause = options.longestPause = std::chrono::hours(1);
        return options;
    }
    Names asked() const
    {
        const std::lock_guard lock(m_mutex);
        return m_asked;
    }
    ErrorCode lastCause() const
    {
        const std::lock_guard lock(m_mutex);
        return m_causes.empty() ? ErrorCode() : m_causes.back();
    }
    std::vector<std::string> tables() const
    {
        return sqlTexts(database(), "SELECT type || ' ' || name FROM sqlite_master WHERE name NOT LIKE 'sqlite%' ORDER BY name");
    }

    ToldEvents told;

private:
    mutable std::mutex m_mutex;
    Names m_asked;
    std::vector<ErrorCode> m_causes;
};

TEST_F(JobKeep, aKeptJobRunsUntilItSucceeds)
{
    std::atomic<int> runs{0};
    TestJob::behave([&](TestJob& job) { return ++runs == 4 && job.remove(); });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    const auto job = submit("roof");
    EXPECT_TRUE(IJobManager::Get()->WaitForJob(job->JobId(), std::chrono::seconds(20)));
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_EQ(job->GetStatus(), JobState::Succeeded);
    EXPECT_THAT(told.kinds(), ElementsAre(Kind::Added, Kind::Started, Kind::Kept, Kind::Started, Kind::Kept, Kind::Started, Kind::Kept,
                                          Kind::Started, Kind::Ended));
    EXPECT_THAT(asked(), ElementsAre("roof", "roof", "roof"));
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobKeep, whatTheHostDropsEndsAsWithoutIt)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keeping(FailedJob::Drop)));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(told.kinds(), ElementsAre(Kind::Added, Kind::Started, Kind::Ended));
    EXPECT_EQ(told.last(Kind::Ended).state, JobState::Failed);
    EXPECT_EQ(told.last(Kind::Ended).error.GetErrorMessage(), L"the job failed");
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(tables(), ElementsAre("table job"));
}

TEST_F(JobKeep, theEventTellsTheCauseAndTheStateWaiting)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    const auto job = submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    const JobEvent kept = told.last(Kind::Kept);
    EXPECT_EQ(kept.state, JobState::Waiting);
    EXPECT_EQ(kept.error.GetValue(), error::badInput) << "what ErrorInfo says of the state Failed";
    EXPECT_EQ(kept.job, job);
    EXPECT_EQ(job->GetStatus(), JobState::Waiting);
    EXPECT_EQ(IJobManager::Get()->GetJob(job->JobId()), job);
    EXPECT_THAT(rows(), ElementsAre("roof"));
}

TEST_F(JobKeep, theCauseOfAnExceptionIsItsText)
{
    TestJob::behave([](TestJob&) -> bool { throw std::runtime_error("out of paper"); });
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    EXPECT_EQ(lastCause().GetValue(), error::exception);
    EXPECT_EQ(lastCause().GetErrorMessage(), L"out of paper");
}

TEST_F(JobKeep, aJobThatAsksByItselfIsAskedForOnce)
{
    class Asking : public TestJob
    {
    public:
        Asking() : TestJob("asking") {}
        bool Run() override
        {
            wasKept = isRunKept(ErrorCode(error::exception, makeGenericError(L"the first")));
            isRunKept(ErrorCode(error::exception, makeGenericError(L"the second")));
            return false;
        }
        std::atomic<bool> wasKept{false};
    };
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    const auto job = std::make_shared<Asking>();
    ASSERT_TRUE(job->save());
    IJobManager::Get()->AddJob(job);
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    EXPECT_TRUE(job->wasKept);
    EXPECT_THAT(asked(), SizeIs(1));
    EXPECT_EQ(lastCause().GetErrorMessage(), L"the first");
}

TEST_F(JobKeep, aJobThatDroppedItsRowHasEnded)
{
    TestJob::behave([](TestJob& job) { return !job.remove(); });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(asked(), IsEmpty());
    EXPECT_THAT(told.kinds(), ElementsAre(Kind::Added, Kind::Started, Kind::Ended));
}

TEST_F(JobKeep, aJobThatNeverHadARowHasEnded)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keeping()));
    IJobManager::Get()->AddJob(std::make_shared<TestJob>("unsaved"));
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(asked(), IsEmpty());
    EXPECT_EQ(told.count(Kind::Ended), 1u);
}

TEST_F(JobKeep, aHostThatThrowsLosesNothing)
{
    TestJob::behave(failing);
    JobManagerOptions options = keepingLong();
    options.onFailure = [](const IJobEntity&, const ErrorCode&) -> FailedJob { throw std::runtime_error("no idea"); };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    EXPECT_THAT(rows(), ElementsAre("roof"));
    EXPECT_TRUE(log.has(L"W [ORLOSDK]whether a job is kept can't be said, so that it is: no idea"));
}

TEST_F(JobKeep, pausesGrowUpToTheLongest)
{
    TestJob::behave(failing);
    JobManagerOptions options = keeping();
    options.firstPause = std::chrono::minutes(10);
    options.longestPause = std::chrono::minutes(60);
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = submit("roof");
    int expected[] = {10, 20, 40, 60, 60};
    for (std::size_t run = 1; run <= std::size(expected); ++run) {
        ASSERT_TRUE(told.waitFor(Kind::Kept, run));
        const auto details = IJobManager::Get()->GetJobDetails(job->JobId());
        ASSERT_TRUE(details && details->nextRun);
        EXPECT_EQ(details->attempts, run);
        const auto pause = std::chrono::duration<double, std::ratio<60>>(*details->nextRun - std::chrono::system_clock::now()).count();
        EXPECT_LE(pause, std::min(60.0, expected[run - 1] * 1.1));
        EXPECT_GT(pause, expected[run - 1] * 0.9 - 3) << "the test may take its time";
        EXPECT_TRUE(IJobManager::Get()->Retry(job->JobId()));
    }
}

TEST_F(JobKeep, thePauseIsAsLongAsThePlatformAsksFor)
{
    TestJob::behave([](TestJob&) { return false; });
    class Busy : public TestJob
    {
    public:
        Busy() : TestJob("busy") {}
        bool Run() override
        {
            RequestDetails details;
            details.retryAfter = std::chrono::seconds(1800);
            isRunKept(ErrorCode(error::errorStatus, makeRequestError(L"HttpError", L"", 503, 0, details)));
            return false;
        }
    };
    JobManagerOptions options = keeping();
    options.longestPause = std::chrono::hours(1);
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = std::make_shared<Busy>();
    ASSERT_TRUE(job->save());
    IJobManager::Get()->AddJob(job);
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    const auto details = IJobManager::Get()->GetJobDetails(job->JobId());
    ASSERT_TRUE(details && details->nextRun);
    EXPECT_GT(*details->nextRun - std::chrono::system_clock::now(), std::chrono::seconds(1700));
}

TEST_F(JobKeep, theNextStartRunsItAtOnceAndKnowsItsAttempts)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    const auto job = submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    ASSERT_TRUE(IJobManager::Get()->Retry(job->JobId()));
    ASSERT_TRUE(told.waitFor(Kind::Kept, 2));
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(sqlTexts(database(), "SELECT attempts FROM kept JOIN job USING (rank)"), ElementsAre("2"));
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    const auto details = IJobManager::Get()->GetJobDetails(job->JobId());
    ASSERT_TRUE(details);
    EXPECT_EQ(details->attempts, 2u);
    EXPECT_EQ(details->state, JobState::Running);
    EXPECT_FALSE(details->nextRun);
    EXPECT_TRUE(details->lastFailure.isClear());
    gate->open();
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(sqlTexts(database(), "SELECT count(*) FROM kept"), ElementsAre("0")) << "it goes with the job's row";
}

TEST_F(JobKeep, withoutKeptJobsTheDatabaseIsAsItEverWas)
{
    ASSERT_TRUE(IJobManager::Start(keeping()));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(tables(), ElementsAre("table job"));
}

TEST_F(JobKeep, aDamagedDatabaseGivesTheKeptJobsBack)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    for (const char* name : {"roof", "wall", "door"})
        submit(name);
    ASSERT_TRUE(told.waitFor(Kind::Kept, 3));
    ASSERT_TRUE(IJobManager::Stop());
    ASSERT_THAT(tables(), ElementsAre("table job", "table kept", "trigger keptNoMore"));
    std::string bytes = readFile(database());
    bytes.replace(0, 100, std::string(100, 'x')); // the head is gone
    writeFile(database(), bytes);
    TestJob::behave(nullptr);
    TestJob::forgetAll();
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), testing::UnorderedElementsAre("roof", "wall", "door"));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]jobs read from the damaged database: 3; known to be lost: 0"));
}

TEST_F(JobKeep, aForeignTableOfThatNameCostsNothingButTheNotes)
{
    saved("roof");
    sqlRun(database(), "CREATE TABLE kept (colour TEXT)");
    std::atomic<int> runs{0};
    TestJob::behave([&](TestJob& job) { return ++runs > 2 && job.remove(); });
    ASSERT_TRUE(IJobManager::Start(keeping()));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_EQ(runs, 3);
    EXPECT_THAT(tables(), ElementsAre("table job", "table kept"));
}

TEST_F(JobKeep, whereTheNotesAreGoneTheJobsAreSaved)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    ASSERT_TRUE(IJobManager::Stop());
    sqlRun(database(), "DROP TABLE kept"); // rows of jobs can't be dropped then, as a trigger wants it
    TestJob::behave(nullptr);
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_TRUE(std::filesystem::exists(jobsFolder() / "jobs.db.damaged-1"));
}

TEST_F(JobKeep, stopAmidAPauseComesBackAtOnceAndLeavesTheRow)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    EXPECT_TRUE(becomesIdle()) << "a job that rests doesn't count";
    EXPECT_FALSE(IJobManager::Get()->WaitForJob(told.last(Kind::Kept).jobId, milliseconds(20)));
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(rows(), ElementsAre("roof"));
}

TEST_F(JobKeep, othersRunWhileOneRests)
{
    TestJob::behave([](TestJob& job) { return job.name != "bad" && job.remove(); });
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    submit("bad");
    submit("good");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), ElementsAre("bad"));
}

TEST_F(JobKeep, aRunThatIsCutOffIsNotAskedAbout)
{
    const auto gate = std::make_shared<Gate>();
    TestJob::behave([gate](TestJob&) {
        gate->wait();
        return false;
    });
    JobManagerOptions options = keeping();
    options.stopWithin = milliseconds(0);
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    gate->open();
    ASSERT_TRUE(IJobManager::Start(keeping(FailedJob::Drop)));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); })) << "the second run is asked about";
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_THAT(asked(), SizeIs(1));
}

TEST_F(JobKeep, theHostMayRemoveTheJobWhenItIsAsked)
{
    TestJob::behave(failing);
    JobManagerOptions options = keepingLong();
    options.onFailure = [](const IJobEntity& job, const ErrorCode&) {
        EXPECT_TRUE(IJobManager::Get()->Remove(job.JobId()));
        return FailedJob::Keep;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Ended));
    EXPECT_TRUE(isCancelled(told.last(Kind::Ended).error));
    EXPECT_EQ(told.count(Kind::Kept), 0u);
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobKeep, theHostMayStopTheManagerWhenItIsAsked)
{
    TestJob::behave(failing);
    JobManagerOptions options = keepingLong();
    std::atomic<bool> isStopped{false};
    options.onFailure = [&](const IJobEntity&, const ErrorCode&) {
        EXPECT_FALSE(IJobManager::Stop()) << "its own run isn't waited for";
        isStopped = true;
        return FailedJob::Keep;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = submit("roof");
    ASSERT_TRUE(waitUntil([&] { return isStopped.load(); }));
    EXPECT_TRUE(waitUntil([&] { return job->GetStatus() == JobState::Waiting; }));
    EXPECT_THAT(rows(), ElementsAre("roof"));
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    TestJob::behave(nullptr);
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); })) << "the run of the first manager has given the jobs back";
}

TEST_F(JobKeep, theHostMayRetryFromTheEvent)
{
    std::atomic<int> runs{0};
    TestJob::behave([&](TestJob& job) { return ++runs == 3 && job.remove(); });
    JobManagerOptions options = keepingLong();
    options.onEvent = [](const JobEvent& event) {
        if (event.kind == Kind::Kept) {
            EXPECT_TRUE(IJobManager::Get()->Retry(event.jobId));
        }
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_EQ(runs, 3);
}

TEST_F(JobKeep, anotherProcessTakesKeptJobsOver)
{
    TestJob::behave(failing);
    ASSERT_TRUE(IJobManager::Start(keepingLong()));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    ChildProcess other({JOB_PROCESS, folder.path().string()});
    ASSERT_EQ(other.ask("start"), "yes");
    ASSERT_EQ(other.ask("runs"), "no");
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_EQ(readFile(folder.path("ran")), "roof\n");
}

/// One failure, and whether what failed with it may succeed later.
struct Failure
{
    const char* name;
    ErrorCode error;
    FailedJob answer;
};

ErrorCode statusOf(int status)
{
    return {error::errorStatus, makeHttpError(L"HttpError", L"", status, 0)};
}
ErrorCode transport(int number)
{
    return {error::exception, makeHttpError(L"generic exception", L"", number, 0)};
}
ErrorCode network(NetworkFailure failure)
{
    RequestDetails details;
    details.failure = failure;
    return {error::exception, makeRequestError(L"generic exception", L"", 0, 0, details)};
}

class MaySucceed : public testing::TestWithParam<Failure>
{};

TEST_P(MaySucceed, isAnsweredByTheRule)
{
    EXPECT_EQ(keepIfItMaySucceed(TestJob("roof"), GetParam().error), GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    JobKeep, MaySucceed,
    testing::Values(Failure{"status400", statusOf(400), FailedJob::Drop}, Failure{"status401", statusOf(401), FailedJob::Keep},
                    Failure{"status403", statusOf(403), FailedJob::Drop}, Failure{"status404", statusOf(404), FailedJob::Drop},
                    Failure{"status408", statusOf(408), FailedJob::Keep}, Failure{"status409", statusOf(409), FailedJob::Drop},
                    Failure{"status413", statusOf(413), FailedJob::Drop}, Failure{"status429", statusOf(429), FailedJob::Keep},
                    Failure{"status500", statusOf(500), FailedJob::Keep}, Failure{"status502", statusOf(502), FailedJob::Keep},
                    Failure{"status503", statusOf(503), FailedJob::Keep}, Failure{"status599", statusOf(599), FailedJob::Keep},
                    Failure{"status600", statusOf(600), FailedJob::Drop}, Failure{"unreadableAnswer", transport(0), FailedJob::Keep},
                    Failure{"hostNotFound", transport(1), FailedJob::Keep}, Failure{"notTrusted", transport(18), FailedJob::Keep},
                    Failure{"unreachable", transport(113), FailedJob::Keep}, Failure{"exception", transport(5555), FailedJob::Drop},
                    Failure{"unknownException", transport(5556), FailedJob::Drop},
                    Failure{"proxyRefused", network(NetworkFailure::proxyRefused), FailedJob::Keep},
                    Failure{"wrongHostName", network(NetworkFailure::wrongHostName), FailedJob::Keep},
                    Failure{"cancelledRequest", network(NetworkFailure::cancelled), FailedJob::Drop},
                    Failure{"cancelled", cancelledError(), FailedJob::Drop}, Failure{"noError", ErrorCode(), FailedJob::Drop},
                    Failure{"noManager", ErrorCode(error::exception, makeHttpError(L"httpError", L"", 10010, 0)), FailedJob::Drop},
                    Failure{"invalidArgument", ErrorCode(error::exception, makeHttpError(L"Invalid argument", L"", 0, 0)), FailedJob::Drop},
                    Failure{"missingFile", ErrorCode(error::exception, makeHttpError(L"HttpError", L"invalid file path", 400, 0)),
                            FailedJob::Drop},
                    Failure{"local", ErrorCode(error::badInput, makeGenericError(L"")), FailedJob::Drop}),
    [](const auto& tested) { return std::string(tested.param.name); });

} // namespace
} // namespace orlo::test
