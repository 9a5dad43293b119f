#include "JobRun.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <algorithm>
#include <utility>

namespace orlo {

namespace {

thread_local JobRun* ofThisThread = nullptr;

std::string accountOf(const std::shared_ptr<UserSession>& session)
{
    return session ? utils::toString(session->getAccountId()) : std::string();
}

/// A token that was renewed leaves it the same.
bool isSameSignIn(const std::shared_ptr<UserSession>& one, const std::shared_ptr<UserSession>& other)
{
    return one == other || (one && other && one->isOfSameSignIn(*other));
}

} // namespace

std::string signedInAccount()
{
    return accountOf(UserSession::GetInstance());
}

bool mayRunNow(const std::string& account)
{
    return account.empty() || account == signedInAccount();
}

void JobRuns::breakOff()
{
    std::vector<std::shared_ptr<Interruption>> runs;
    {
        const std::lock_guard lock(m_mutex);
        m_areBrokenOff = true;
        for (const JobRun* const run : m_runs) {
            if (run != JobRun::current())
                runs.push_back(run->m_cutOff);
        }
    }
    // Without the lock: what is broken off may come back at once.
    for (const auto& run : runs)
        run->request();
}

void JobRuns::breakOff(const std::string& jobId)
{
    std::shared_ptr<Interruption> cutOff;
    {
        const std::lock_guard lock(m_mutex);
        for (const JobRun* const run : m_runs) {
            if (run->m_terms.jobId == jobId)
                cutOff = run->m_cutOff;
        }
    }
    if (cutOff)
        cutOff->request();
}

// With the lock: no run may begin between the two, and take the one session for the other.
void JobRuns::changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace)
{
    const std::lock_guard lock(m_mutex);
    const std::string account = accountOf(next);
    for (const JobRun* const run : m_runs) {
        if (run->m_account != account)
            run->m_cutOff->request();
    }
    replace();
}

void JobRuns::add(JobRun& run)
{
    const std::lock_guard lock(m_mutex);
    run.m_session = UserSession::GetInstance();
    run.m_account = accountOf(run.m_session);
    m_runs.push_back(&run);
    if (m_areBrokenOff)
        run.m_cutOff->request(); // nobody listens yet
}

void JobRuns::drop(const JobRun& run)
{
    const std::lock_guard lock(m_mutex);
    m_runs.erase(std::find(m_runs.begin(), m_runs.end(), &run));
}

JobRun::JobRun(JobRuns& all, Terms terms)
    : m_all(all),
      m_terms(std::move(terms)),
      m_cutOff(std::make_shared<Interruption>()),
      m_scope(Interruption::within({m_cutOff, m_terms.cancel, m_terms.meter, true}))
{
    m_all.add(*this);
    ofThisThread = this;
}

JobRun::~JobRun()
{
    ofThisThread = nullptr;
    m_all.drop(*this);
}

bool JobRun::isCutOff() const
{
    return m_cutOff->isRequested() || !isSameSignIn(UserSession::GetInstance(), m_session);
}

bool JobRun::isKept(const ErrorCode& cause)
{
    if (!m_terms.keeps)
        return false;
    // In this order: whatever cuts the run off meanwhile, nothing is dropped that nobody was asked about.
    if (!m_cause && !isCancelled()) {
        if (isCutOff())
            return true;
        m_cause = cause;
        m_isKept = m_terms.keeps(cause);
    }
    return m_isKept;
}

JobRun* JobRun::current()
{
    return ofThisThread;
}

} // namespace orlo
