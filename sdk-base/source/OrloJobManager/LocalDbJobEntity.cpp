#include "JobLog.h"
#include "JobRun.h"
#include "JobStore.h"

#include <OrloJobManager/LocalDbJobEntity.h>

namespace orlo {

namespace {

JobRow rowOf(const LocalDbJobEntity& job)
{
    JobRow row;
    row.id = job.JobId();
    row.typeKey = job.GetJobTypeKey();
    row.json = job.ToJson();
    row.createTime = job.GetCreateTime();
    row.jobType = static_cast<int>(job.GetType());
    return row;
}

bool failed(const char* function, int line)
{
    ILogManager::Get()->LogErrorAt(__FILE__, line, function, joblog::currentException(), L"[ORLOSDK]");
    return false;
}

} // namespace

LocalDbJobEntity::LocalDbJobEntity() = default;
LocalDbJobEntity::~LocalDbJobEntity() = default;

bool LocalDbJobEntity::remove()
{
    try {
        return (m_store ? m_store : JobStore::current())->erase(JobId());
    }
    catch (...) {
        return failed("orlo::LocalDbJobEntity::remove", __LINE__);
    }
}

bool LocalDbJobEntity::save()
{
    try {
        const JobRow row = rowOf(*this);
        const std::shared_ptr<JobStore> store = JobStore::current();
        if (!store->put(row))
            return false;
        m_store = store;
        return true;
    }
    catch (...) {
        return failed("orlo::LocalDbJobEntity::save", __LINE__);
    }
}

bool LocalDbJobEntity::isRunCutOff()
{
    const JobRun* const run = JobRun::current();
    return run && run->isCutOff();
}

bool LocalDbJobEntity::isRowGone() const
{
    return m_store && !m_store->contains(JobId()).value_or(true);
}

} // namespace orlo
