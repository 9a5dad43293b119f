#pragma once

#include <BaseCommon/ErrorCode.h>
#include <OrloJobManager/Export.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

enum class JobState : int { Waiting = 0, Running = 1, Succeeded = 2, Failed = 3 };

enum class JobType : int { Unknown = 0, UploadFile = 2, UploadTemplate = 3, UploadModule = 4 };

/// One piece of work that outlives the application.
class ORLO_JOB_API IJobEntity
{
public:
    using List = std::vector<std::shared_ptr<IJobEntity>>;

    IJobEntity();
    virtual ~IJobEntity();

    IJobEntity(const IJobEntity&) = delete;
    IJobEntity& operator=(const IJobEntity&) = delete;

    virtual JobState GetStatus() const = 0;
    virtual JobType GetType() const = 0;
    virtual std::string JobId() const = 0;
    /// The outcome of a finished job.
    virtual ErrorCode ErrorInfo() const = 0;
    /// Milliseconds since 1970.
    virtual std::int64_t GetCreateTime() const = 0;
    /// Does the work on a thread of the job manager and blocks it.   Returns: whether the work ended well.
    virtual bool Run() = 0;
    /// May the job start now, while the jobs of the first list run and those of the second wait?
    virtual bool IsCanRun(const List& running, const List& waiting) = 0;
    virtual void SetStatus(JobState status) = 0;
    virtual void SetType(JobType type) = 0;
    /// The job that should run before this one, or null.
    virtual std::shared_ptr<IJobEntity> GetPriorityJob() const = 0;
    /// Deletes the job's row.
    virtual bool remove() = 0;
    /// Names the class in the job database.
    virtual std::string GetJobTypeKey() const = 0;
    virtual bool LoadFromJson(const std::string& text) = 0;
    virtual std::string ToJson() const = 0;
    /// Writes the job's row.
    virtual bool save() = 0;
    virtual bool operator<(const IJobEntity& other) const = 0;
};

} // namespace orlo
