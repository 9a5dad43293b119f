#include "support/HostSetup.h"
#include "support/LogCapture.h"
#include "support/ProcessProbe.h"
#include "support/Sanitized.h"
#include "support/Sql.h"
#include "support/TestJob.h"
#include "support/Waiting.h"

#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <future>
#include <memory>

namespace orlo::test {
namespace {

class UploadJobMass : public testing::Test
{
protected:
    void TearDown() override
    {
        gate->open();
        IJobManager::Stop();
        TestJob::forgetAll();
    }

    /// Returns when the first job holds the worker, and thus all others wait.
    void start()
    {
        JobManagerOptions options;
        options.workers = 1;
        ASSERT_TRUE(IJobManager::Start(options));
        ASSERT_TRUE(waitUntil([this] { return gate->arrived() == 1; }));
    }

    std::filesystem::path database() const { return host.folder().path("Jobs/jobs.db"); }

    /// Ten thousand uploads behind a job that holds the one worker.
    void fill()
    {
        TestJob::behave(waitAt(gate));
        ASSERT_TRUE(TestJob("blocker", 1).save());
        sqlRun(database(), R"sql(
WITH RECURSIVE counted(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM counted WHERE n < 10000)
INSERT INTO job (id, typeKey, json, createTime, jobType)
SELECT '1c6a0a5e-5f0e-4b8e-9d3e-' || printf('%012d', n), 'E6FDB37F - 39D1 - 4BDD - A8E6 - 59E881C78190',
'{"jobId":"1c6a0a5e-5f0e-4b8e-9d3e-' || printf('%012d', n) || '","cloudifyFile":{"createTime":' || (n + 1000) ||
',"projectId":"7f0c4a52-5f0e-4b8e-9d3e-6d8d4b0f6a11","fileName":"滨江医院一期.model","fileId":"","folderId":"b1c9f7a2-5f0e-4b8e-9d3e-6d8d4b0f6a11",'
|| '"localFilePath":"/home/somebody/.local/share/Orlo/Jobs/7f0c4a52/1c6a0a5e-5f0e-4b8e-9d3e-6d8d4b0f6a11/滨江医院一期.model",'
|| '"dsId":"","dsVersion":-1}}', n + 1000, 2 FROM counted;)sql");
    }

    HostSetup host{"http://127.0.0.1:1"};
    LogCapture log;
    const std::shared_ptr<Gate> gate = std::make_shared<Gate>();
};

TEST_F(UploadJobMass, tenThousandUploadsAreRebuiltAndStayWhenTheyDoNotRun)
{
    fill();
    start();
    EXPECT_EQ(IJobManager::Get()->GetJobs().size(), 10001u);
    auto stopping = std::async(std::launch::async, [] { return IJobManager::Stop(); });
    ASSERT_TRUE(waitUntil([] { return IJobManager::Get() == nullptr; }));
    gate->open();
    EXPECT_TRUE(stopping.get());
    EXPECT_THAT(sqlTexts(database(), "SELECT count(*) FROM job"), testing::ElementsAre("10000"));
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(UploadJobMass, anUploadThatWaitsTakesLessThanFourKiB)
{
    if (isSanitized)
        GTEST_SKIP() << "the sanitizers take memory of their own for each allocation";
    fill();
    const std::size_t before = memoryOf().now;
    start();
    const std::size_t after = memoryOf().now;
    EXPECT_GT(after, before);
    EXPECT_LT((after - before) / 10000, 4096u);
}

} // namespace
} // namespace orlo::test
