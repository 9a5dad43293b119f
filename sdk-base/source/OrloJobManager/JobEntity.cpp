#include "JobEntity.h"

#include <BaseCommon/Uuid.h>

#include <chrono>

namespace orlo {

namespace {

std::int64_t millisecondsSince1970()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

} // namespace

JobEntity::JobEntity() : m_jobId(uuid::newUUIDV4()), m_jobCreateTime(millisecondsSince1970())
{}

JobEntity::~JobEntity() = default;

JobState JobEntity::GetStatus() const
{
    return m_status;
}

JobType JobEntity::GetType() const
{
    return m_type;
}

std::string JobEntity::JobId() const
{
    return m_jobId;
}

ErrorCode JobEntity::ErrorInfo() const
{
    return {};
}

std::int64_t JobEntity::GetCreateTime() const
{
    return m_jobCreateTime;
}

bool JobEntity::IsCanRun(const List&, const List&)
{
    return true;
}

void JobEntity::SetStatus(JobState status)
{
    m_status = status;
}

void JobEntity::SetType(JobType type)
{
    m_type = type;
}

std::shared_ptr<IJobEntity> JobEntity::GetPriorityJob() const
{
    return m_priorityJob.lock();
}

} // namespace orlo
