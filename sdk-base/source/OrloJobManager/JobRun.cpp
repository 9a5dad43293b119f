#include "JobRun.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

#include <algorithm>

namespace orlo {

namespace {

thread_local const JobRun* ofThisThread = nullptr;

std::string accountOf(const std::shared_ptr<UserSession>& session)
{
    return session ? utils::toString(session->getAccountId()) : std::string();
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
                runs.push_back(run->m_interruption);
        }
    }
    // Without the lock: what is broken off may come back at once.
    for (const auto& run : runs)
        run->request();
}

// With the lock: no run may begin between the two, and take the one session for the other.
void JobRuns::changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace)
{
    const std::lock_guard lock(m_mutex);
    const std::string account = accountOf(next);
    for (const JobRun* const run : m_runs) {
        if (run->m_account != account)
            run->m_interruption->request();
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
        run.m_interruption->request(); // nobody listens yet
}

void JobRuns::drop(const JobRun& run)
{
    const std::lock_guard lock(m_mutex);
    m_runs.erase(std::find(m_runs.begin(), m_runs.end(), &run));
}

JobRun::JobRun(JobRuns& all) : m_all(all), m_interruption(std::make_shared<Interruption>()), m_scope(m_interruption)
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
    return m_interruption->isRequested() || UserSession::GetInstance() != m_session;
}

const JobRun* JobRun::current()
{
    return ofThisThread;
}

} // namespace orlo
