#include "JobsTest.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace orlo::test {
namespace {

constexpr int many = 10000;

class JobMass : public JobsTest
{
protected:
    /// Ten thousand rows at one stroke.
    void fill()
    {
        saved("first").reset();
        sqlRun(database(), R"sql(
WITH RECURSIVE counted(n) AS (SELECT 2 UNION ALL SELECT n + 1 FROM counted WHERE n < 10000)
INSERT INTO job (id, typeKey, json, createTime, jobType)
SELECT 'id' || n, 'test job', '{"jobId":"id' || n || '","createTime":' || (n * 7919 % 10007) || ',"name":"job"}', n, 2 FROM counted;)sql");
    }
};

TEST_F(JobMass, tenThousandRowsAreRebuiltAndRunInOrder)
{
    fill();
    auto gate = std::make_shared<Gate>();
    std::mutex mutex;
    std::vector<std::int64_t> times;
    TestJob::behave([&, gate](TestJob& job) {
        gate->wait();
        const std::lock_guard lock(mutex);
        times.push_back(job.GetCreateTime());
        return job.remove();
    });
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    EXPECT_EQ(IJobManager::Get()->GetJobs().size(), static_cast<std::size_t>(many));
    gate->open();
    ASSERT_TRUE(waitUntil([] { return TestJob::ranCount() >= 50; }));
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_EQ(rows().size(), many - times.size());
    EXPECT_GE(times.size(), 50u);
    EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
}

TEST_F(JobMass, tenThousandWaitingJobsAreComparedAndAskedWithMeasure)
{
    auto gate = std::make_shared<Gate>();
    TestJob::behave([gate](TestJob&) { return gate->wait(); });
    ASSERT_TRUE(IJobManager::Start(workers(2)));
    std::atomic<int> asked{0};
    std::atomic<std::size_t> longest{0};
    // Nobody may run beside another.
    const auto alone = [&](const IJobEntity::List& running, const IJobEntity::List& waiting) {
        ++asked;
        longest = std::max(longest.load(), waiting.size());
        return running.empty();
    };
    for (int i = 0; i < many; ++i) {
        const auto job = std::make_shared<TestJob>("job", i * 7919 % 10007);
        job->mayRun = alone;
        IJobManager::Get()->AddJob(job);
    }
    // The first of them may get into its Run after the last was asked.
    ASSERT_TRUE(waitUntil([&] { return asked == many && TestJob::ranCount() == 1; }));
    EXPECT_EQ(asked, many) << "each of them once, as long as none has ended";
    EXPECT_GE(longest, static_cast<std::size_t>(1));
    // A binary search of 14 steps, with two questions at each.
    EXPECT_LT(TestJob::comparisons(), static_cast<std::size_t>(many * 14 * 4));
    EXPECT_EQ(IJobManager::Get()->GetJobs().size(), static_cast<std::size_t>(many));
    TestJob::behave([](TestJob&) { return true; });
    gate->open();
    EXPECT_TRUE(waitUntil([] { return TestJob::ranCount() > 20; }));
    IJobManager::Stop(); // before what the jobs look at is gone
}

TEST_F(JobMass, aJobThatMayRunIsAskedOnce)
{
    ASSERT_TRUE(IJobManager::Start(workers(4)));
    TestJob::behave([](TestJob&) { return true; });
    std::atomic<int> asked{0};
    for (int i = 0; i < many; ++i) {
        const auto job = std::make_shared<TestJob>("job", i);
        job->mayRun = [&](const auto&, const auto&) { return ++asked > 0; };
        IJobManager::Get()->AddJob(job);
    }
    ASSERT_TRUE(IJobManager::Get()->WaitForIdle(std::chrono::seconds(100)));
    EXPECT_EQ(asked, many);
    EXPECT_EQ(TestJob::ranCount(), static_cast<std::size_t>(many));
}

} // namespace
} // namespace orlo::test
