#pragma once

#include "support/Sql.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/FileJob/JobCopy.h>
#include <OrloProjectManager/FileJob/UploadJobEntity.h>

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace orlo::test {

inline std::wstring fromUtf8(const std::filesystem::path& path)
{
    return utils::toWstring(path.u8string());
}

/// A job whose row is dropped under the eyes of the test.
template <class Entity>
class WatchedJob : public Entity
{
public:
    using Entity::Entity;

    /// What happened in its turn: "remove", and whether the copy was there then.
    std::vector<std::string> steps;

    bool remove() override
    {
        steps.push_back(hasCopy() ? "remove with the copy there" : "remove without a copy");
        return Entity::remove();
    }
    bool hasCopy() const { return std::filesystem::exists(std::filesystem::u8path(utils::toString(this->GetLocalFilePath()))); }
};

/// A host with a scripted platform, and the private copies of jobs.
class UploadJobsTest : public TransferTest
{
protected:
    /// The private copy of a file of the user's, in the project "p-1".
    std::wstring copyOf(const std::string& name, const std::string& content);

    std::filesystem::path jobsFolder() const { return host.folder().path("Jobs"); }
    std::vector<std::string> rows() const { return sqlTexts(jobsFolder() / "jobs.db", "SELECT json FROM job ORDER BY rank"); }
    /// The private copies below a project, as "<folder>/<file>" with each folder shown as "*".
    std::vector<std::string> copies(const std::string& projectId = "p-1") const;

    /// Saves the job, runs it, and expects the end that every job has: no row, no copy.
    template <class Job>
    void run(Job& job, bool success, int status, const std::wstring& message)
    {
        ASSERT_TRUE(job.save());
        ASSERT_TRUE(job.hasCopy());
        EXPECT_EQ(job.Run(), success);
        ASSERT_EQ(job.future().wait_for(std::chrono::seconds(0)), std::future_status::ready);
        expectOutcome(job.future().get(), success, status, message);
        EXPECT_THAT(job.steps, testing::ElementsAre("remove with the copy there"));
        EXPECT_THAT(rows(), testing::IsEmpty());
        EXPECT_THAT(copies(), testing::IsEmpty());
    }

    const RetryLimit threeRetries{3};
};

} // namespace orlo::test
