#include "JobBoard.h"

#include "JobLog.h"
#include "JobRun.h"

#include <algorithm>
#include <utility>

namespace orlo {

namespace {

constexpr std::chrono::seconds betweenQuestions{1};

/// Far, but not so far that adding it to a clock overflows.
std::chrono::milliseconds bounded(std::chrono::milliseconds time)
{
    return std::clamp<std::chrono::milliseconds>(time, std::chrono::milliseconds(0), std::chrono::hours(24 * 365));
}

} // namespace

bool JobBoard::add(const Job& job, unsigned attempts)
{
    const std::lock_guard lock(m_mutex);
    const auto [position, isNew] = m_known.try_emplace(job.id);
    if (!isNew)
        return false;
    Known& added = position->second;
    added.job = job;
    added.number = ++m_lastNumber;
    added.standing.entity = job.entity;
    added.standing.attempts = attempts;
    bringBack(added);
    return true;
}

Job JobBoard::next()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_isStopped)
            return {};
        const auto now = Clock::now();
        wakeRested(now);
        if (!mayPick(now)) {
            waitForNews(lock);
            continue;
        }
        Job job = pick(lock);
        if (job.entity)
            return job;
    }
}

bool JobBoard::mayPick(Clock::time_point now) const
{
    return m_hasNews && !m_isPicking && (!m_shutUntil || *m_shutUntil <= now);
}

/// When there will be something to do that nobody tells of.
std::optional<JobBoard::Clock::time_point> JobBoard::nextLook() const
{
    std::optional<Clock::time_point> next;
    if (!m_resting.empty())
        next = m_resting.begin()->first;
    if (m_hasNews && !m_isPicking && m_shutUntil)
        next = next ? std::min(*next, *m_shutUntil) : *m_shutUntil;
    return next;
}

void JobBoard::waitForNews(std::unique_lock<std::mutex>& lock)
{
    if (const auto next = nextLook())
        m_changed.wait_until(lock, *next);
    else
        m_changed.wait(lock);
}

// The jobs are asked without the lock: what they do may take its time, and may lead back here. So is the host.
Job JobBoard::pick(std::unique_lock<std::mutex>& lock)
{
    const Look look = beginLook();
    lock.unlock();
    Choice choice = choose(look);
    const bool isMoreThere = m_queue.hasUntried();
    lock.lock();
    m_isPicking = false;
    m_asker.reset();
    m_shutUntil = choice.isShut ? std::optional(Clock::now() + betweenQuestions) : std::nullopt;
    m_hasNews = m_hasNews || isMoreThere;
    m_changed.notify_all();
    if (m_isStopped || !choice.job.entity)
        return {};
    return started(std::move(choice.job));
}

JobBoard::Look JobBoard::beginLook()
{
    m_isPicking = true;
    m_hasNews = false;
    if (m_mayStart)
        m_asker = std::this_thread::get_id();
    return {std::exchange(m_arrivals, {}), std::exchange(m_departures, {}), std::exchange(m_hasEnded, false), m_running};
}

JobBoard::Choice JobBoard::choose(const Look& look)
{
    try {
        for (const auto& entity : look.departures)
            m_queue.remove(*entity);
        for (const Job& job : look.arrivals)
            m_queue.add(job);
        if (look.hasEnded)
            m_queue.retryAll();
        if (m_queue.hasUntried() && isShut())
            return {{}, true};
        return {m_queue.takeRunnable(look.running, m_isStopped), false};
    }
    catch (...) { // out of memory; a worker that leaves the board would take the whole process along
        log::error(L"the next job can't be chosen: " + wordsOfCaught());
        return {};
    }
}

bool JobBoard::isShut()
{
    if (!m_mayStart)
        return false;
    try {
        const bool mayStart = m_mayStart();
        m_hasAskingFailed = false;
        return !mayStart;
    }
    catch (...) { // a line each second would be too much
        if (!std::exchange(m_hasAskingFailed, true))
            log::warning(L"whether jobs may start can't be said, so that none does: " + wordsOfCaught());
        return true;
    }
}

/// What happened to the job while it was chosen counts: it may be out of the queue in vain.
Job JobBoard::started(Job job)
{
    Known* const chosen = known(job.id);
    if (!chosen || chosen->job.entity != job.entity || chosen->isLeaving || chosen->standing.isRunning || chosen->standing.isPaused ||
        chosen->standing.restsUntil)
        return {};
    forgetArrival(job); // it may have come a second time meanwhile
    chosen->standing.isRunning = true;
    m_running.push_back(job.entity);
    return job;
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
    leaveRunning(job);
    if (const Known* const back = known(job.id))
        bringBack(*back);
}

void JobBoard::rest(const Job& job, std::chrono::milliseconds pause, const ErrorCode& failure, const std::function<void()>& told)
{
    const std::lock_guard lock(m_mutex);
    told();
    leaveRunning(job);
    Known* const resting = known(job.id);
    if (!resting)
        return;
    ++resting->standing.attempts;
    resting->standing.lastFailure = failure;
    resting->standing.restsUntil = Clock::now() + pause;
    m_resting.emplace(*resting->standing.restsUntil, job.id);
    m_areSomeCancelled = m_areSomeCancelled || job.cancel->isRequested();
}

void JobBoard::leaveRunning(const Job& job)
{
    if (Known* const left = known(job.id))
        left->standing.isRunning = false;
    m_running.erase(std::remove(m_running.begin(), m_running.end(), job.entity), m_running.end());
    m_hasEnded = true;
    m_hasNews = true;
    m_changed.notify_all();
}

JobBoard::Known* JobBoard::known(const std::string& id)
{
    const auto found = m_known.find(id);
    return found == m_known.end() ? nullptr : &found->second;
}

void JobBoard::forgetArrival(const Job& job)
{
    const auto isIt = [&](const Job& arrival) { return arrival.entity == job.entity; };
    m_arrivals.erase(std::remove_if(m_arrivals.begin(), m_arrivals.end(), isIt), m_arrivals.end());
}

/// The job isn't to start, wherever it stands.
void JobBoard::setOut(const Job& job)
{
    forgetArrival(job);
    m_departures.push_back(job.entity);
    m_hasNews = true;
    m_changed.notify_all();
}

/// The job may start, unless something is in its way. Departures are looked at before arrivals.
void JobBoard::bringBack(const Known& known)
{
    m_areSomeCancelled = m_areSomeCancelled || (known.job.cancel && known.job.cancel->isRequested());
    if (!known.isLeaving && !known.standing.isPaused && !known.standing.isRunning && !known.standing.restsUntil)
        m_arrivals.push_back(known.job);
    m_hasNews = true;
    m_changed.notify_all();
}

void JobBoard::endRest(Known& known)
{
    if (!known.standing.restsUntil)
        return;
    m_resting.erase({*known.standing.restsUntil, known.job.id});
    known.standing.restsUntil.reset();
}

void JobBoard::wakeRested(Clock::time_point now)
{
    while (!m_resting.empty() && m_resting.begin()->first <= now) {
        const std::string id = m_resting.begin()->second;
        m_resting.erase(m_resting.begin());
        if (Known* const rested = known(id)) {
            rested->standing.restsUntil.reset();
            bringBack(*rested);
        }
    }
}

bool JobBoard::retry(const std::string& id)
{
    const std::lock_guard lock(m_mutex);
    Known* const rested = known(id);
    if (rested && rested->standing.restsUntil) {
        endRest(*rested);
        bringBack(*rested);
    }
    return rested != nullptr;
}

bool JobBoard::pause(const std::string& id)
{
    const std::lock_guard lock(m_mutex);
    Known* const paused = known(id);
    if (paused && !std::exchange(paused->standing.isPaused, true) && !paused->standing.isRunning)
        setOut(paused->job);
    return paused != nullptr;
}

bool JobBoard::resume(const std::string& id)
{
    const std::lock_guard lock(m_mutex);
    Known* const resumed = known(id);
    if (resumed && std::exchange(resumed->standing.isPaused, false))
        bringBack(*resumed);
    return resumed != nullptr;
}

bool JobBoard::isPaused(const std::string& id) const
{
    const auto now = standing(id);
    return now && now->isPaused;
}

std::optional<JobBoard::Standing> JobBoard::standing(const std::string& id) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_known.find(id);
    return found == m_known.end() ? std::nullopt : std::optional(found->second.standing);
}

std::optional<JobBoard::Removal> JobBoard::takeOut(const std::string& id)
{
    const std::lock_guard lock(m_mutex);
    Known* const taken = known(id);
    if (!taken)
        return std::nullopt;
    if (taken->isLeaving || taken->standing.isRunning)
        return Removal{taken->job, false};
    taken->isLeaving = true;
    endRest(*taken);
    setOut(taken->job);
    return Removal{taken->job, true};
}

std::vector<Job> JobBoard::takeCancelled()
{
    const std::lock_guard lock(m_mutex);
    std::vector<Job> cancelled;
    if (!std::exchange(m_areSomeCancelled, false))
        return cancelled;
    for (auto& [id, job] : m_known) {
        if (job.isLeaving || job.standing.isRunning || !job.job.cancel || !job.job.cancel->isRequested())
            continue;
        job.isLeaving = true;
        endRest(job);
        setOut(job.job);
        cancelled.push_back(job.job);
    }
    return cancelled;
}

void JobBoard::noteCancelled()
{
    const std::lock_guard lock(m_mutex);
    m_areSomeCancelled = true;
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
    m_changed.wait_for(lock, bounded(atMost), [this] { return m_isStopped || m_areSomeCancelled; });
    return m_isStopped;
}

std::shared_ptr<IJobEntity> JobBoard::find(const std::string& id) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_known.find(id);
    return found == m_known.end() ? nullptr : found->second.job.entity;
}

IJobEntity::List JobBoard::jobs() const
{
    std::vector<std::pair<std::uint64_t, std::shared_ptr<IJobEntity>>> all;
    {
        const std::lock_guard lock(m_mutex);
        for (const auto& [id, known] : m_known)
            all.emplace_back(known.number, known.job.entity);
    }
    std::sort(all.begin(), all.end());
    IJobEntity::List jobs;
    for (auto& [number, entity] : all)
        jobs.push_back(std::move(entity));
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
    return m_running.empty() &&
           std::none_of(m_known.begin(), m_known.end(), [&](const auto& known) { return countsAsBusy(known.second, account); });
}

bool JobBoard::countsAsBusy(const Known& known, const std::string& account) const
{
    if (known.isLeaving)
        return true;
    const bool isHeld = m_shutUntil || known.standing.isPaused || known.standing.restsUntil;
    return !isHeld && (known.job.account.empty() || known.job.account == account);
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
    const auto isAsked = [&] { return m_asker && *m_asker != std::this_thread::get_id(); };
    return m_changed.wait_for(lock, bounded(atMost), [&] { return m_running.size() <= atMostJobs && !isAsked(); });
}

} // namespace orlo
