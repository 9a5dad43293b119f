#include "JobsTest.h"
#include "ToldEvents.h"

#include <OrloAuth/UserSession.h>

#include <atomic>
#include <future>
#include <stdexcept>

// What is asked before jobs start.
namespace orlo::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = JobEvent::Kind;

class JobCondition : public JobsTest
{
protected:
    void TearDown() override
    {
        JobsTest::TearDown();
        UserSession::SignOut();
    }

    JobManagerOptions asking()
    {
        JobManagerOptions options = workers(2);
        options.mayStart = [this] {
            ++questions;
            return isOpen.load();
        };
        return options;
    }

    std::atomic<int> questions{0};
    std::atomic<bool> isOpen{false};
};

TEST_F(JobCondition, noJobStartsBeforeItHolds)
{
    saved("left");
    ASSERT_TRUE(IJobManager::Start(asking()));
    const auto job = submit("added");
    ASSERT_TRUE(waitUntil([&] { return questions >= 2; }));
    EXPECT_THAT(TestJob::ran(), IsEmpty());
    EXPECT_EQ(job->GetStatus(), JobState::Waiting);
    EXPECT_TRUE(becomesIdle()) << "what it holds back doesn't count";
    isOpen = true;
    EXPECT_TRUE(IJobManager::Get()->WaitForJob(job->JobId(), std::chrono::seconds(20)));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
}

TEST_F(JobCondition, itIsAskedAboutOnceASecondWhileJobsWait)
{
    ASSERT_TRUE(IJobManager::Start(asking()));
    const auto begin = std::chrono::steady_clock::now();
    submit("roof");
    ASSERT_TRUE(waitUntil([&] { return questions >= 3; }));
    const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    EXPECT_LE(questions, seconds + 2) << "no more often";
}

TEST_F(JobCondition, newJobsDoNotMakeItAskedMoreOften)
{
    ASSERT_TRUE(IJobManager::Start(asking()));
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 200; ++i)
        submit("job");
    ASSERT_TRUE(waitUntil([&] { return questions >= 1; }));
    EXPECT_LE(questions, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() + 2);
    isOpen = true;
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
}

TEST_F(JobCondition, itIsNotAskedWithoutJobs)
{
    ASSERT_TRUE(IJobManager::Start(asking()));
    isOpen = true;
    submit("roof");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    ASSERT_TRUE(becomesIdle());
    const int before = questions;
    EXPECT_FALSE(waitUntil([&] { return questions > before; }, milliseconds(1500)));
}

TEST_F(JobCondition, itHoldsKeptJobsToo)
{
    isOpen = true;
    ToldEvents told;
    TestJob::behave([this](TestJob&) {
        isOpen = false;
        return false;
    });
    JobManagerOptions options = asking();
    options.firstPause = milliseconds(1);
    options.onFailure = [](const IJobEntity&, const ErrorCode&) { return FailedJob::Keep; };
    told.listen(options);
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(told.waitFor(Kind::Kept));
    const int before = questions;
    ASSERT_TRUE(waitUntil([&] { return questions >= before + 2; }));
    EXPECT_EQ(TestJob::ranCount(), 1u);
    TestJob::behave(nullptr);
    isOpen = true;
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    ASSERT_TRUE(IJobManager::Stop());
}

TEST_F(JobCondition, itMayCallTheManager)
{
    JobManagerOptions options = asking();
    options.mayStart = [this] {
        ++questions;
        const IJobEntity::List jobs = IJobManager::Get()->GetJobs();
        return !jobs.empty() && IJobManager::Get()->GetJobDetails(jobs.front()->JobId()).has_value();
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
}

TEST_F(JobCondition, whatItThrowsCountsAsNoAndIsToldOnce)
{
    JobManagerOptions options = asking();
    options.mayStart = [this]() -> bool {
        if (++questions < 3)
            throw std::runtime_error("no idea");
        return true;
    };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_EQ(questions, 3);
    EXPECT_EQ(log.count(L"W [ORLOSDK]whether jobs may start can't be said, so that none does: no idea"), 1u);
}

TEST_F(JobCondition, stopDoesNotWaitForAnAnswerWithoutEnd)
{
    const auto gate = std::make_shared<Gate>();
    JobManagerOptions options = asking();
    options.stopWithin = milliseconds(0);
    options.mayStart = [gate] { return gate->wait(); };
    ASSERT_TRUE(IJobManager::Start(options));
    submit("roof");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    gate->open();
    EXPECT_THAT(rows(), ElementsAre("roof"));
    EXPECT_THAT(TestJob::ran(), IsEmpty());
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
}

TEST_F(JobCondition, aRunningJobIsNotItsBusiness)
{
    const auto gate = holdJobs();
    isOpen = true;
    ASSERT_TRUE(IJobManager::Start(asking()));
    const auto job = submit("roof");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    isOpen = false;
    gate->open();
    EXPECT_TRUE(IJobManager::Get()->WaitForJob(job->JobId(), std::chrono::seconds(20)));
    EXPECT_EQ(job->GetStatus(), JobState::Succeeded);
}

TEST_F(JobCondition, somebodyIsSignedIn)
{
    JobManagerOptions options = workers(1);
    options.mayStart = isSomebodySignedIn;
    UserSession::SignOut();
    EXPECT_FALSE(isSomebodySignedIn());
    ASSERT_TRUE(IJobManager::Start(options));
    const auto job = submit("nobody's");
    EXPECT_FALSE(IJobManager::Get()->WaitForJob(job->JobId(), milliseconds(50)));
    EXPECT_THAT(TestJob::ran(), IsEmpty());
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    EXPECT_TRUE(isSomebodySignedIn());
    EXPECT_TRUE(IJobManager::Get()->WaitForJob(job->JobId(), std::chrono::seconds(20)));
}

} // namespace
} // namespace orlo::test
