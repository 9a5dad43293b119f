#include "JobsTest.h"
#include "support/ChildProcess.h"
#include "support/ProcessProbe.h"
#include "support/ThreadShortage.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <filesystem>
#include <future>
#include <iterator>
#include <set>
#include <thread>

namespace orlo::test {
namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> common(const std::set<std::string>& left, const std::set<std::string>& right)
{
    std::vector<std::string> names;
    std::set_intersection(left.begin(), left.end(), right.begin(), right.end(), std::back_inserter(names));
    return names;
}

class JobLife : public JobsTest
{};

TEST_F(JobLife, thereIsAManagerFromStartToStop)
{
    EXPECT_EQ(IJobManager::Get(), nullptr);
    ASSERT_TRUE(IJobManager::Start({}));
    EXPECT_NE(IJobManager::Get(), nullptr);
    EXPECT_TRUE(IJobManager::Get()->RunsJobs());
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_EQ(IJobManager::Get(), nullptr);
}

TEST_F(JobLife, stopWithoutStartIsNoFailure)
{
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(JobLife, aSecondStartChangesNothing)
{
    ASSERT_TRUE(IJobManager::Start({}));
    IJobManager* const manager = IJobManager::Get();
    EXPECT_TRUE(IJobManager::Start(workers(5)));
    EXPECT_EQ(IJobManager::Get(), manager);
    EXPECT_THAT(log.lines(), ElementsAre(L"W [ORLOSDK]the job manager runs already, with the options of its first start"));
}

TEST_F(JobLife, startsAgainAfterStop)
{
    for (const char* name : {"first", "second", "third"}) {
        ASSERT_TRUE(IJobManager::Start({}));
        submit(name);
        ASSERT_TRUE(becomesIdle());
        ASSERT_TRUE(IJobManager::Stop());
    }
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "second", "third"));
}

TEST_F(JobLife, aJobGoesThroughItsStates)
{
    ASSERT_TRUE(IJobManager::Start({}));
    auto gate = std::make_shared<Gate>();
    TestJob::behave([gate](TestJob& job) {
        EXPECT_EQ(job.GetStatus(), JobState::Running);
        gate->wait();
        job.remove();
        return job.name == "good";
    });
    const auto good = saved("good");
    EXPECT_EQ(good->GetStatus(), JobState::Waiting);
    IJobManager::Get()->AddJob(good);
    const auto bad = submit("bad");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 2; }));
    gate->open();
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(good->GetStatus(), JobState::Succeeded);
    EXPECT_TRUE(good->ErrorInfo().isClear());
    EXPECT_EQ(bad->GetStatus(), JobState::Failed);
    EXPECT_EQ(bad->ErrorInfo().GetErrorMessage(), L"the job failed");
}

TEST_F(JobLife, anExceptionFailsTheJobAndHarmsNobodyElse)
{
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    TestJob::behave([](TestJob& job) -> bool {
        if (job.name == "standard")
            throw std::runtime_error("out of paper");
        if (job.name == "odd")
            throw 5;
        return job.remove();
    });
    const auto standard = submit("standard");
    const auto odd = submit("odd");
    const auto good = submit("good");
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(standard->GetStatus(), JobState::Failed);
    EXPECT_EQ(odd->GetStatus(), JobState::Failed);
    EXPECT_EQ(good->GetStatus(), JobState::Succeeded);
    EXPECT_THAT(log.lines(),
                ElementsAre(L"E [ORLOSDK]job " + utils::toWstring(standard->JobId()) + L" ended with an exception: out of paper",
                            L"E [ORLOSDK]job " + utils::toWstring(odd->JobId()) + L" ended with an exception: unknown exception"));
    EXPECT_THAT(rows(), IsEmpty()) << "a job that ended doesn't run again at the next start";
}

TEST_F(JobLife, anEndedJobHasLeftTheList)
{
    ASSERT_TRUE(IJobManager::Start({}));
    const auto job = submit("roof");
    ASSERT_TRUE(IJobManager::Get()->WaitForJob(job->JobId(), std::chrono::seconds(60)));
    EXPECT_EQ(IJobManager::Get()->GetJob(job->JobId()), nullptr);
    EXPECT_THAT(IJobManager::Get()->GetJobs(), IsEmpty());
}

TEST_F(JobLife, theListTellsWhoWaitsAndRunsInTheOrderOfAddition)
{
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    const auto gate = holdJobs();
    const auto first = submit("first", 3);
    const auto second = submit("second", 2);
    const auto third = submit("third", 1);
    EXPECT_THAT(IJobManager::Get()->GetJobs(), ElementsAre(first, second, third));
    EXPECT_EQ(IJobManager::Get()->GetJob(second->JobId()), second);
    EXPECT_EQ(IJobManager::Get()->GetJob("no such id"), nullptr);
    gate->open();
}

TEST_F(JobLife, waitingTellsWhetherTheTimeWasEnough)
{
    ASSERT_TRUE(IJobManager::Start({}));
    const auto gate = holdJobs();
    const auto job = submit("roof");
    EXPECT_FALSE(IJobManager::Get()->WaitForIdle(milliseconds(20)));
    EXPECT_FALSE(IJobManager::Get()->WaitForJob(job->JobId(), milliseconds(20)));
    EXPECT_FALSE(IJobManager::Get()->WaitForIdle(milliseconds(-5)));
    EXPECT_TRUE(IJobManager::Get()->WaitForJob("no such id", milliseconds(0)));
    gate->open();
    EXPECT_TRUE(IJobManager::Get()->WaitForIdle(milliseconds::max()));
    EXPECT_TRUE(IJobManager::Get()->WaitForJob(job->JobId(), milliseconds::max()));
}

TEST_F(JobLife, stopEndsAWait)
{
    JobManagerOptions options;
    options.stopWithin = milliseconds(0);
    ASSERT_TRUE(IJobManager::Start(options));
    const auto gate = holdJobs();
    submit("roof");
    IJobManager* const manager = IJobManager::Get();
    auto waiting = std::async(std::launch::async, [manager] { return manager->WaitForIdle(std::chrono::hours(1)); });
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    // Either it saw the stop, or it came after it, when there were no jobs any more.
    EXPECT_EQ(waiting.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    gate->open();
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
}

TEST_F(JobLife, aJobIsAddedOnce)
{
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    const auto gate = holdJobs();
    submit("blocker");
    const auto job = submit("roof");
    IJobManager::Get()->AddJob(job);
    EXPECT_THAT(log.lines(), ElementsAre(L"W [ORLOSDK]job " + utils::toWstring(job->JobId()) + L" was added before"));
    gate->open();
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), ElementsAre("blocker", "roof"));
}

TEST_F(JobLife, aJobThatWasFoundByItsRowAndHasEndedIsNotRunAgain)
{
    const auto job = saved("roof");
    ASSERT_TRUE(IJobManager::Start({}));
    ASSERT_TRUE(becomesIdle());
    IJobManager::Get()->AddJob(job);
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), ElementsAre("roof"));
    EXPECT_THAT(log.lines(),
                ElementsAre(L"I [ORLOSDK]job " + utils::toWstring(job->JobId()) + L" was found by its row and has run already"));
}

TEST_F(JobLife, aNullJobIsRefused)
{
    ASSERT_TRUE(IJobManager::Start({}));
    IJobManager::Get()->AddJob(nullptr);
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]a job that is null can't be added"));
    EXPECT_THAT(IJobManager::Get()->GetJobs(), IsEmpty());
}

TEST_F(JobLife, atLeastOneWorkerRuns)
{
    ASSERT_TRUE(IJobManager::Start(workers(0)));
    submit("roof");
    EXPECT_TRUE(becomesIdle());
}

TEST_F(JobLife, noMoreJobsRunAtOnceThanThereAreWorkers)
{
    ASSERT_TRUE(IJobManager::Start(workers(3)));
    std::atomic<int> now{0};
    std::atomic<int> most{0};
    TestJob::behave([&](TestJob& job) {
        const int count = ++now;
        int seen = most;
        while (seen < count && !most.compare_exchange_weak(seen, count)) {
        }
        std::this_thread::yield();
        --now;
        return job.remove();
    });
    for (int i = 0; i < 60; ++i)
        submit("job");
    ASSERT_TRUE(becomesIdle());
    EXPECT_LE(most, 3);
    EXPECT_EQ(TestJob::ranCount(), 60u);
}

TEST_F(JobLife, aManagerThatGetsNoThreadsDoesNotStart)
{
    saved("roof");
    {
        const ThreadShortage shortage;
        EXPECT_FALSE(IJobManager::Start({}));
    }
    EXPECT_EQ(IJobManager::Get(), nullptr);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]the system has no threads for the jobs"));
    ASSERT_TRUE(IJobManager::Start({}));
    EXPECT_TRUE(IJobManager::Get()->RunsJobs());
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), ElementsAre("roof"));
}

TEST_F(JobLife, aJobMayBeAddedWhileTheManagerStarts)
{
    class Slow : public TestJob
    {
    public:
        explicit Slow(std::shared_ptr<Gate> until) : m_until(std::move(until)) {}
        std::string GetJobTypeKey() const override { return "slow"; }
        bool LoadFromJson(const std::string& text) override { return m_until->wait() && TestJob::LoadFromJson(text); }

    private:
        std::shared_ptr<Gate> m_until;
    };
    auto gate = std::make_shared<Gate>();
    const JobEntityRegistration registration("slow", [gate] { return std::make_shared<Slow>(gate); });
    Slow slow(gate);
    slow.name = "slow";
    ASSERT_TRUE(slow.save());
    auto starting = std::async(std::launch::async, [] { return IJobManager::Start({}); });
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    ASSERT_NE(IJobManager::Get(), nullptr);
    const auto job = submit("meanwhile");
    gate->open();
    ASSERT_TRUE(starting.get());
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(job->GetStatus(), JobState::Succeeded);
    EXPECT_THAT(TestJob::ran(), testing::UnorderedElementsAre("slow", "meanwhile"));
}

TEST_F(JobLife, stopLeavesTheRowsOfThoseThatWaitAndLetsTheRunningEnd)
{
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    const auto gate = holdJobs();
    const auto running = submit("running");
    const auto waiting = submit("waiting");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    auto stopping = std::async(std::launch::async, [] { return IJobManager::Stop(); });
    ASSERT_TRUE(waitUntil([] { return IJobManager::Get() == nullptr; }));
    gate->open();
    EXPECT_TRUE(stopping.get());
    EXPECT_EQ(running->GetStatus(), JobState::Succeeded);
    EXPECT_EQ(waiting->GetStatus(), JobState::Waiting);
    EXPECT_THAT(rows(), ElementsAre("waiting"));
    EXPECT_THAT(TestJob::ran(), ElementsAre("running"));
}

TEST_F(JobLife, noThreadIsLeftAfterStop)
{
    ASSERT_TRUE(IJobManager::Start({})); // some threads of the runtime may come with the first of ours
    ASSERT_TRUE(IJobManager::Stop());
    const std::set<std::string> before = threadNames();
    JobManagerOptions options = workers(4);
    options.onEvent = [](const JobEvent&) {};
    ASSERT_TRUE(IJobManager::Start(options));
    std::set<std::string> ours = threadNames();
    for (const std::string& earlier : before)
        ours.erase(earlier);
    EXPECT_THAT(ours, testing::SizeIs(6));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    // What a thread leaves of itself in the system's list goes shortly after it was joined.
    EXPECT_TRUE(waitUntil([&] { return common(ours, threadNames()).empty(); }));
}

TEST_F(JobLife, aJobThatOutlastsStopKeepsItsRowAndEndsInPeace)
{
    JobManagerOptions options = workers(2);
    options.stopWithin = milliseconds(50);
    ASSERT_TRUE(IJobManager::Start(options));
    const auto gate = holdJobs();
    const auto job = submit("slow");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    EXPECT_TRUE(log.has(L"W [ORLOSDK]jobs outlast the stop of the job manager; their rows stay until they end"));
    EXPECT_THAT(rows(), ElementsAre("slow"));
    EXPECT_EQ(job->GetStatus(), JobState::Running);
    gate->open();
    EXPECT_TRUE(waitUntil([&] { return job->GetStatus() == JobState::Succeeded && rows().empty(); }));
}

TEST_F(JobLife, theNextManagerWaitsForAJobThatOutlastedStop)
{
    JobManagerOptions options = workers(2);
    options.stopWithin = milliseconds(0);
    ASSERT_TRUE(IJobManager::Start(options));
    const auto gate = holdJobs();
    submit("slow");
    ASSERT_TRUE(waitUntil([&] { return gate->arrived() == 1; }));
    EXPECT_FALSE(IJobManager::Stop());
    ASSERT_TRUE(IJobManager::Start({}));
    EXPECT_FALSE(IJobManager::Get()->RunsJobs());
    submit("next");
    EXPECT_THAT(rows(), ElementsAre("slow", "next"));
    gate->open();
    EXPECT_TRUE(waitUntil([] { return IJobManager::Get()->RunsJobs(); }));
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_THAT(TestJob::ran(), ElementsAre("slow", "next")) << "the slow one must not have run twice";
}

TEST_F(JobLife, aPointerFromBeforeStopLeadsToAManagerWithoutJobs)
{
    ASSERT_TRUE(IJobManager::Start({}));
    IJobManager* const manager = IJobManager::Get();
    ASSERT_TRUE(IJobManager::Stop());
    const auto job = saved("late");
    manager->AddJob(job);
    EXPECT_THAT(log.lines(), ElementsAre(L"W [ORLOSDK]the job manager is stopped; the row of job " + utils::toWstring(job->JobId()) +
                                         L" stays for its next start"));
    EXPECT_THAT(manager->GetJobs(), IsEmpty());
    EXPECT_EQ(manager->GetJob(job->JobId()), nullptr);
    EXPECT_TRUE(manager->WaitForIdle(milliseconds(0)));
    EXPECT_FALSE(manager->RunsJobs());
    EXPECT_THAT(rows(), ElementsAre("late"));
}

TEST_F(JobLife, aJobMayStopTheManager)
{
    ASSERT_TRUE(IJobManager::Start(workers(2)));
    std::promise<bool> result;
    TestJob::behave([&](TestJob& job) {
        result.set_value(IJobManager::Stop());
        return job.remove();
    });
    const auto job = submit("roof");
    EXPECT_FALSE(result.get_future().get()) << "the job itself hasn't ended";
    EXPECT_EQ(IJobManager::Get(), nullptr);
    EXPECT_TRUE(waitUntil([&] { return job->GetStatus() == JobState::Succeeded && rows().empty(); }));
}

TEST_F(JobLife, aJobMayAskTheManagerAndAddOthers)
{
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    TestJob::behave([](TestJob& job) {
        EXPECT_EQ(IJobManager::Get()->GetJobs().size(), 1u);
        if (job.name == "first")
            submit("second");
        return job.remove();
    });
    submit("first");
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "second"));
}

TEST_F(JobLife, manyThreadsMayStartStopAndAdd)
{
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!isOver) {
                const auto job = std::make_shared<TestJob>("job");
                ASSERT_TRUE(job->save());
                if (IJobManager* const manager = IJobManager::Get()) {
                    manager->AddJob(job);
                    manager->GetJobs();
                    manager->WaitForJob(job->JobId(), milliseconds(1));
                }
            }
        });
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(IJobManager::Start({}));
        EXPECT_TRUE(IJobManager::Stop());
    }
    isOver = true;
    for (std::thread& thread : threads)
        thread.join();
    const std::size_t left = rows().size();
    const std::size_t ranBefore = TestJob::ranCount();
    ASSERT_TRUE(IJobManager::Start({}));
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(TestJob::ranCount(), ranBefore + left);
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobLife, aProcessMayEndWithoutStop)
{
    ChildProcess host({JOB_PROCESS, folder.path().string()});
    ASSERT_EQ(host.ask("start"), "yes");
    ASSERT_EQ(host.ask("hold"), "yes");
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(host.ask("save job" + std::to_string(i)), "yes");
        ASSERT_EQ(host.ask("add"), "yes");
    }
    ASSERT_TRUE(waitUntil([&] { return host.ask("held") == "2"; }));
    host.tell("leave");
    EXPECT_EQ(host.wait(), 0);
    EXPECT_THAT(rows(), ElementsAre("job0", "job1", "job2", "job3"));
}

} // namespace
} // namespace orlo::test
