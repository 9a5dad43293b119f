#pragma once

#include <OrloJobManager/IJobEntity.h>

#include <atomic>

namespace orlo {

/// What all jobs have in common: an id and a create time of their own, the status, and the job to run first.
class ORLO_JOB_API JobEntity : public IJobEntity
{
public:
    JobEntity();
    ~JobEntity() override;

    JobState GetStatus() const override;
    JobType GetType() const override;
    std::string JobId() const override;
    /// An ErrorCode without an error: what went wrong is known to the derived classes only.
    ErrorCode ErrorInfo() const override;
    std::int64_t GetCreateTime() const override;
    /// True: a plain job waits for nobody.
    bool IsCanRun(const List& running, const List& waiting) override;
    void SetStatus(JobState status) override;
    void SetType(JobType type) override;
    std::shared_ptr<IJobEntity> GetPriorityJob() const override;

protected:
    std::string m_jobId;
    std::int64_t m_jobCreateTime;
    /// Weak, since two waiting jobs may name each other.
    std::weak_ptr<IJobEntity> m_priorityJob;

private:
    // The job manager sets these while others ask.
    std::atomic<JobState> m_status{JobState::Waiting};
    std::atomic<JobType> m_type{JobType::Unknown};
};

} // namespace orlo
