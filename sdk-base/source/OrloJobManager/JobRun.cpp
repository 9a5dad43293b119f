#include "JobRun.h"

#include <OrloAuth/UserSession.h>

#include <algorithm>

namespace orlo {

namespace {

thread_local const JobRun* ofThisThread = nullptr;

} // namespace

void JobRuns::add(const std::shared_ptr<Interruption>& run)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_runs.push_back(run);
        if (!m_areBrokenOff)
            return;
    }
    run->request();
}

void JobRuns::drop(const std::shared_ptr<Interruption>& run)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_runs.erase(std::find(m_runs.begin(), m_runs.end(), run));
}

void JobRuns::breakOff()
{
    std::vector<std::shared_ptr<Interruption>> runs;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        runs = m_runs;
        m_areBrokenOff = true;
    }
    const auto own = Interruption::current();
    // Without the lock: what is broken off may come back at once.
    for (const auto& run : runs) {
        if (run != own)
            run->request();
    }
}

JobRun::JobRun(JobRuns& all)
    : m_all(all), m_interruption(std::make_shared<Interruption>()), m_session(UserSession::GetInstance()), m_scope(m_interruption)
{
    m_all.add(m_interruption);
    ofThisThread = this;
}

JobRun::~JobRun()
{
    ofThisThread = nullptr;
    m_all.drop(m_interruption);
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
