#include "JobsTest.h"

#include <BaseCommon/Text.h>

#include <map>
#include <mutex>
#include <stdexcept>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// One worker, which is held by a job "blocker" until the test lets it go, so that all others wait together.
class JobScheduling : public JobsTest
{
protected:
    void SetUp() override
    {
        TestJob::behave([this](TestJob& job) {
            if (job.name == "blocker")
                gate.wait();
            return job.remove();
        });
        ASSERT_TRUE(IJobManager::Start(workers(1)));
        submit("blocker");
        ASSERT_TRUE(waitUntil([this] { return gate.arrived() == 1; }));
    }
    void TearDown() override
    {
        gate.open();
        JobsTest::TearDown();
    }

    /// The names behind the blocker's.
    Names runAll()
    {
        gate.open();
        EXPECT_TRUE(becomesIdle());
        Names names = TestJob::ran();
        names.erase(names.begin());
        return names;
    }

    static std::shared_ptr<TestJob> add(const std::string& name, TestJob::MayRun mayRun, std::int64_t createTime = 1000)
    {
        const auto job = std::make_shared<TestJob>(name, createTime);
        job->mayRun = std::move(mayRun);
        EXPECT_TRUE(job->save());
        IJobManager::Get()->AddJob(job);
        return job;
    }

    Gate gate;
};

TEST_F(JobScheduling, startsInTheOrderOfOperatorLess)
{
    submit("third", 30);
    submit("first", 10);
    submit("second", 20);
    EXPECT_THAT(runAll(), ElementsAre("first", "second", "third"));
}

TEST_F(JobScheduling, startsEqualJobsInTheOrderOfTheirAddition)
{
    for (const char* name : {"a", "b", "c", "d", "e"})
        submit(name, 10);
    EXPECT_THAT(runAll(), ElementsAre("a", "b", "c", "d", "e"));
}

TEST_F(JobScheduling, neverComparesJobsOfTwoClasses)
{
    class Other : public TestJob
    {
    public:
        using TestJob::TestJob;
        bool operator<(const IJobEntity& other) const override
        {
            return GetCreateTime() < dynamic_cast<const Other&>(other).GetCreateTime();
        }
    };
    class Third : public Other
    {
    public:
        using Other::Other;
        bool operator<(const IJobEntity& other) const override
        {
            EXPECT_NE(dynamic_cast<const Third*>(&other), nullptr);
            return Other::operator<(other);
        }
    };
    const auto submitted = [](auto job) {
        EXPECT_TRUE(job->save());
        IJobManager::Get()->AddJob(job);
    };
    submitted(std::make_shared<Third>("4", 40));
    submitted(std::make_shared<TestJob>("2", 20));
    submitted(std::make_shared<Third>("1", 10));
    submitted(std::make_shared<TestJob>("3", 30));
    submitted(std::make_shared<Third>("5", 40));
    EXPECT_THAT(runAll(), ElementsAre("1", "2", "3", "4", "5"));
}

TEST_F(JobScheduling, aComparisonThatThrowsLosesNoJob)
{
    class Wild : public TestJob
    {
    public:
        using TestJob::TestJob;
        bool operator<(const IJobEntity&) const override { throw std::runtime_error("no order"); }
    };
    for (const char* name : {"a", "b", "c"}) {
        const auto job = std::make_shared<Wild>(name);
        ASSERT_TRUE(job->save());
        IJobManager::Get()->AddJob(job);
    }
    EXPECT_THAT(runAll(), ElementsAre("a", "b", "c"));
}

TEST_F(JobScheduling, anOrderWithoutSenseLosesNoJob)
{
    class Wild : public TestJob
    {
    public:
        using TestJob::TestJob;
        bool operator<(const IJobEntity&) const override { return true; }
    };
    for (int i = 0; i < 50; ++i) {
        const auto job = std::make_shared<Wild>("wild");
        job->mayRun = [tries = 0](const auto&, const auto&) mutable { return ++tries > 2; };
        ASSERT_TRUE(job->save());
        IJobManager::Get()->AddJob(job);
    }
    // They come later, so that the others are asked in front of each.
    submit("tame 1", 2001);
    submit("tame 2", 2002);
    submit("tame 3", 2003);
    EXPECT_EQ(runAll().size(), 53u);
}

TEST_F(JobScheduling, aJobIsShownWhoRunsAndWhoElseWaits)
{
    std::vector<Names> shown;
    submit("a", 10);
    add(
        "b",
        [&](const auto& running, const auto& waiting) {
            shown = {namesOf(running), namesOf(waiting)};
            return true;
        },
        5);
    submit("c", 20);
    runAll();
    EXPECT_THAT(shown, ElementsAre(IsEmpty(), ElementsAre("a", "c")));
}

TEST_F(JobScheduling, aJobThatMayNotRunIsAskedAgainWhenAnotherHasEnded)
{
    int asked = 0;
    add(
        "patient", [&](const auto&, const auto&) { return ++asked == 3; }, 1);
    submit("a", 10);
    submit("b", 20);
    submit("c", 30);
    EXPECT_THAT(runAll(), ElementsAre("a", "b", "patient", "c"));
    EXPECT_EQ(asked, 3);
}

TEST_F(JobScheduling, aJobThatNeverMayRunStaysAndHoldsNobodyUp)
{
    add(
        "never", [](const auto&, const auto&) { return false; }, 1);
    const auto last = submit("last", 10);
    gate.open();
    EXPECT_TRUE(IJobManager::Get()->WaitForJob(last->JobId(), std::chrono::seconds(60)));
    EXPECT_FALSE(IJobManager::Get()->WaitForIdle(std::chrono::milliseconds(1)));
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(rows(), ElementsAre("never"));
}

TEST_F(JobScheduling, anExceptionOfIsCanRunMeansNotNow)
{
    const auto moody = add(
        "moody",
        [asked = 0](const auto&, const auto&) mutable {
            if (++asked == 1)
                throw std::runtime_error("bad mood");
            return true;
        },
        1);
    submit("a", 10);
    EXPECT_THAT(runAll(), ElementsAre("a", "moody"));
    EXPECT_THAT(log.lines(),
                ElementsAre(L"E [ORLOSDK]job " + utils::toWstring(moody->JobId()) + L" can't say whether it may run: bad mood"));
}

TEST_F(JobScheduling, aWaitingPriorityJobGoesFirst)
{
    const auto late = submit("late", 90);
    const auto early = std::make_shared<TestJob>("early", 10);
    early->runAfter(late);
    ASSERT_TRUE(early->save());
    IJobManager::Get()->AddJob(early);
    submit("middle", 50);
    EXPECT_THAT(runAll(), ElementsAre("late", "early", "middle"));
}

TEST_F(JobScheduling, aPriorityJobThatMayNotRunIsNotWaitedFor)
{
    int asked = 0;
    const auto late = add(
        "late", [&](const auto&, const auto&) { return ++asked > 1; }, 90);
    const auto early = std::make_shared<TestJob>("early", 10);
    early->runAfter(late);
    ASSERT_TRUE(early->save());
    IJobManager::Get()->AddJob(early);
    EXPECT_THAT(runAll(), ElementsAre("early", "late"));
    EXPECT_EQ(asked, 2);
}

TEST_F(JobScheduling, aPriorityJobThatWasNeverAddedCountsForNothing)
{
    const auto stranger = std::make_shared<TestJob>("stranger");
    const auto job = std::make_shared<TestJob>("job");
    job->runAfter(stranger);
    ASSERT_TRUE(job->save());
    IJobManager::Get()->AddJob(job);
    EXPECT_THAT(runAll(), ElementsAre("job"));
}

TEST_F(JobScheduling, jobsThatNameEachOtherOrThemselvesAllRun)
{
    const auto one = std::make_shared<TestJob>("one", 1);
    const auto two = std::make_shared<TestJob>("two", 2);
    const auto self = std::make_shared<TestJob>("self", 3);
    one->runAfter(two);
    two->runAfter(one);
    self->runAfter(self);
    for (const auto& job : {one, two, self}) {
        ASSERT_TRUE(job->save());
        IJobManager::Get()->AddJob(job);
    }
    EXPECT_THAT(runAll(), ElementsAre("two", "one", "self"));
}

TEST_F(JobScheduling, aJobGivesWayToOthersEightTimesAtMost)
{
    // As a kind of job does whose newest goes first: the oldest names whichever other one waits.
    const auto patient = std::make_shared<TestJob>("patient", 1);
    patient->mayRun = [job = patient.get()](const auto&, const auto& waiting) {
        if (!waiting.empty())
            job->runAfter(waiting.front());
        return true;
    };
    ASSERT_TRUE(patient->save());
    IJobManager::Get()->AddJob(patient);
    for (int i = 0; i < 20; ++i)
        submit("new", 100 + i);
    const Names ran = runAll();
    EXPECT_EQ(ran.size(), 21u);
    EXPECT_EQ(std::find(ran.begin(), ran.end(), "patient") - ran.begin(), 8);
}

TEST_F(JobScheduling, twoJobsOfOneKindThatExcludeEachOtherNeverRunTogether)
{
    runAll();
    ASSERT_TRUE(IJobManager::Stop());
    std::mutex mutex;
    std::map<std::string, int> running;
    TestJob::behave([&](TestJob& job) {
        {
            const std::lock_guard lock(mutex);
            EXPECT_EQ(++running[job.name], 1) << job.name;
        }
        const bool isRemoved = job.remove(); // takes its time: it waits for the disk
        const std::lock_guard lock(mutex);
        --running[job.name];
        return isRemoved;
    });
    ASSERT_TRUE(IJobManager::Start(workers(4)));
    for (int i = 0; i < 40; ++i) {
        const std::string name = "module " + std::to_string(i % 3);
        add(name, [name](const auto& others, const auto&) {
            const Names names = namesOf(others);
            return std::find(names.begin(), names.end(), name) == names.end();
        });
    }
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), IsEmpty());
}

} // namespace
} // namespace orlo::test
