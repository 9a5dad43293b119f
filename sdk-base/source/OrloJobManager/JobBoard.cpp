#include "JobBoard.h"

#include "JobLog.h"
#include "JobRun.h"

#include <algorithm>
#include <utility>

namespace orlo {

namespace {

/// Far, but not so far that adding it to a clock overflows.
std::chrono::milliseconds bounded(std::chrono::milliseconds time)
{
    return std::clamp<std::chrono::milliseconds>(time, std::chrono::milliseconds(0), std::chrono::hours(24 * 365));
}

} // namespace

bool JobBoard::add(const Job& job)
{
    const std::lock_guard lock(m_mutex);
    if (!m_known.try_emplace(job.id, Known{job.entity, m_lastNumber + 1, job.account}).second)
        return false;
    ++m_lastNumber;
    m_arrivals.push_back(job);
    m_hasNews = true;
    m_changed.notify_all();
    return true;
}

Job JobBoard::next()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isStopped || (m_hasNews && !m_isPicking); });
        if (m_isStopped)
            return {};
        Job job = pick(lock);
        if (job.entity)
            return job;
    }
}

// The jobs are asked without the lock: what they do may take its time, and may lead back here.
Job JobBoard::pick(std::unique_lock<std::mutex>& lock)
{
    m_isPicking = true;
    m_hasNews = false;
    const std::vector<Job> arrivals = std::exchange(m_arrivals, {});
    const bool hasEnded = std::exchange(m_hasEnded, false);
    const IJobEntity::List running = m_running;
    lock.unlock();
    Job job = choose(arrivals, hasEnded, running);
    const bool isMoreThere = m_queue.hasUntried();
    lock.lock();
    m_isPicking = false;
    m_hasNews = m_hasNews || isMoreThere;
    m_changed.notify_all();
    if (m_isStopped)
        return {};
    if (job.entity)
        m_running.push_back(job.entity);
    return job;
}

Job JobBoard::choose(const std::vector<Job>& arrivals, bool hasEnded, const IJobEntity::List& running)
{
    try {
        for (const Job& job : arrivals)
            m_queue.add(job);
        if (hasEnded)
            m_queue.retryAll();
        return m_queue.takeRunnable(running, m_isStopped);
    }
    catch (...) { // out of memory; a worker that leaves the board would take the whole process along
        log::error(L"the next job can't be chosen: " + wordsOfCaught());
        return {};
    }
}

void JobBoard::ended(const Job& job)
{
    const std::lock_guard lock(m_mutex);
    m_known.erase(job.id);
    leaveRunning(job);
}

void JobBoard::putBack(const Job& job)
{
    const std::lock_guard lock(m_mutex);
    m_arrivals.push_back(job);
    leaveRunning(job);
}

void JobBoard::leaveRunning(const Job& job)
{
    m_running.erase(std::remove(m_running.begin(), m_running.end(), job.entity), m_running.end());
    m_hasEnded = true;
    m_hasNews = true;
    m_changed.notify_all();
}

void JobBoard::stop()
{
    const std::lock_guard lock(m_mutex);
    m_isStopped = true;
    m_changed.notify_all();
}

bool JobBoard::waitForStop(std::chrono::milliseconds atMost)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, bounded(atMost), [this] { return m_isStopped.load(); });
}

std::shared_ptr<IJobEntity> JobBoard::find(const std::string& id) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_known.find(id);
    return found == m_known.end() ? nullptr : found->second.entity;
}

IJobEntity::List JobBoard::jobs() const
{
    std::vector<Known> all;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [id, known] : m_known)
            all.push_back(known);
    }
    std::sort(all.begin(), all.end(), [](const Known& left, const Known& right) { return left.number < right.number; });
    IJobEntity::List jobs;
    for (Known& known : all)
        jobs.push_back(std::move(known.entity));
    return jobs;
}

template <class Condition>
bool JobBoard::waitFor(std::chrono::milliseconds atMost, const Condition& condition)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, bounded(atMost), [&] { return m_isStopped || condition(); });
    return condition();
}

bool JobBoard::waitForIdle(std::chrono::milliseconds atMost)
{
    return waitFor(atMost, [this] { return isIdle(); });
}

bool JobBoard::isIdle() const
{
    const std::string account = m_known.empty() ? std::string() : signedInAccount();
    return m_running.empty() && std::none_of(m_known.begin(), m_known.end(), [&](const auto& known) {
               return known.second.account.empty() || known.second.account == account;
           });
}

void JobBoard::retryAll()
{
    const std::lock_guard lock(m_mutex);
    m_hasEnded = true;
    m_hasNews = true;
    m_changed.notify_all();
}

bool JobBoard::waitForJob(const std::string& id, std::chrono::milliseconds atMost)
{
    return waitFor(atMost, [&] { return m_known.count(id) == 0; });
}

bool JobBoard::waitForRunning(std::size_t atMostJobs, std::chrono::milliseconds atMost)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, bounded(atMost), [&] { return m_running.size() <= atMostJobs; });
}

} // namespace orlo
