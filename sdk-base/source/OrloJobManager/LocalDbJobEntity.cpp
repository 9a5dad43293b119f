#include "LocalDbJobEntity.h"

#include "JobLog.h"
#include "JobRun.h"
#include "JobStore.h"

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

bool failed(const CallSite& site)
{
    log::errorAt(site, wordsOfCaught());
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
        return failed(ORLO_HERE("orlo::LocalDbJobEntity::remove"));
    }
}

bool LocalDbJobEntity::save()
{
    try {
        JobRow row = rowOf(*this);
        row.account = m_account ? *m_account : signedInAccount();
        const std::shared_ptr<JobStore> store = JobStore::current();
        const std::optional<std::string> account = store->put(row);
        if (!account)
            return false;
        m_store = store;
        m_account = account;
        return true;
    }
    catch (...) {
        return failed(ORLO_HERE("orlo::LocalDbJobEntity::save"));
    }
}

bool LocalDbJobEntity::isRunCutOff()
{
    const JobRun* const run = JobRun::current();
    return run && run->isCutOff();
}

bool LocalDbJobEntity::isRunCancelled()
{
    const JobRun* const run = JobRun::current();
    return run && run->isCancelled();
}

bool LocalDbJobEntity::isRunKept(const ErrorCode& cause)
{
    JobRun* const run = JobRun::current();
    return run && run->isKept(cause);
}

std::string LocalDbJobEntity::account() const
{
    return m_account.value_or(std::string());
}

void LocalDbJobEntity::setAccount(const std::string& account)
{
    m_account = account;
}

bool LocalDbJobEntity::isRowGone() const
{
    return m_store && !m_store->contains(JobId()).value_or(true);
}

} // namespace orlo
