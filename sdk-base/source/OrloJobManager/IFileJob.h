#pragma once

#include <OrloJobManager/Export.h>

#include <string>

namespace orlo {

/// What a job with a file of its own tells the manager and the host, beside what it is as an IJobEntity. A job class may have it or not.
class ORLO_JOB_API IFileJob
{
public:
    IFileJob();
    virtual ~IFileJob();

    IFileJob(const IFileJob&) = delete;
    IFileJob& operator=(const IFileJob&) = delete;

    /// Asked by any thread, while the job runs too.
    virtual const std::string& GetProjectId() const = 0;
    virtual std::wstring GetFileName() const = 0;
    /// The job ends as cancelled, whether it has run or not, and its row is gone: what else it holds is to go, its copy of the file above
    /// all, and whoever waits for its outcome is told. Asked once, on a thread of the manager's or in Remove; not while the job runs.
    virtual void Cancelled() = 0;
};

} // namespace orlo
