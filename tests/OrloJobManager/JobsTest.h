#pragma once

#include "support/LogCapture.h"
#include "support/Sql.h"
#include "support/TempFolder.h"
#include "support/TestJob.h"
#include "support/Waiting.h"

#include <OrloJobManager/IJobManager.h>

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace orlo::test {

/// An empty local root; at the end the manager is stopped and all behaviour is forgotten.
class JobsTest : public testing::Test
{
protected:
    using Names = std::vector<std::string>;

    JobsTest() : localRoot(folder) { TestJob::forgetAll(); }
    /// Jobs and callbacks look at members of the fixtures.
    void TearDown() override
    {
        IJobManager::Stop();
        TestJob::forgetAll();
    }

    std::filesystem::path jobsFolder() const { return folder.path("Jobs"); }
    std::filesystem::path database() const { return jobsFolder() / "jobs.db"; }

    /// The names in the rows, in their order.
    Names rows() const { return sqlTexts(database(), "SELECT json_extract(json, '$.name') FROM job ORDER BY rank"); }

    static JobManagerOptions workers(unsigned count)
    {
        JobManagerOptions options;
        options.workers = count;
        return options;
    }

    static std::shared_ptr<TestJob> saved(const std::string& name, std::int64_t createTime = 1000)
    {
        const auto job = std::make_shared<TestJob>(name, createTime);
        EXPECT_TRUE(job->save());
        return job;
    }

    /// What every host does: saves, then adds.
    static std::shared_ptr<TestJob> submit(const std::string& name, std::int64_t createTime = 1000)
    {
        const auto job = saved(name, createTime);
        IJobManager::Get()->AddJob(job);
        return job;
    }

    static bool becomesIdle() { return IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)); }

    TempFolder folder;
    LocalRoot localRoot;
    LogCapture log;
};

} // namespace orlo::test
