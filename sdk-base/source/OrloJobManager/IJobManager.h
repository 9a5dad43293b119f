#pragma once

#include <OrloJobManager/IJobEntity.h>

#include <memory>
#include <string>

namespace orlo {

struct JobManagerOptions
{
    unsigned workers = 2;
};

/// Runs jobs, and runs those that an earlier process left behind.
class ORLO_JOB_API IJobManager
{
public:
    IJobManager();
    virtual ~IJobManager();

    IJobManager(const IJobManager&) = delete;
    IJobManager& operator=(const IJobManager&) = delete;

    /// Opens the job database and starts the workers. The database is not available in this version: logs that and returns false.
    static bool Start(const JobManagerOptions& options);
    static void Stop();

    /// Returns: the job manager; null before Start and after Stop.   Threads: any.
    static IJobManager* Get() noexcept;

    /// The jobs that wait or run.
    virtual IJobEntity::List GetJobs() const = 0;
    /// Returns: the job with the id; null if there is none.
    virtual std::shared_ptr<IJobEntity> GetJob(const std::string& jobId) const = 0;
    /// Hands a saved job over to be run.
    virtual void AddJob(std::shared_ptr<IJobEntity> job) = 0;
};

} // namespace orlo
