#include "JobRunner.h"

#include "JobLog.h"
#include "StrayCopies.h"

#include <BaseCommon/Text.h>
#include <OrloJobManager/LocalDbJobEntity.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace orlo {

namespace {

constexpr std::chrono::milliseconds watchInterval{1000};
constexpr unsigned mostWorkers = 64;

// Threads that have nothing to do need a moment to end, even where nobody wants to wait; and jobs that are broken off need one to come
// back.
constexpr std::chrono::milliseconds leastPatience{200};
constexpr std::chrono::milliseconds patienceWithBrokenOff{2000};

// A job that was saved before the manager started is found by its row, and may have ended before it is added.
bool hasRunAlready(const Job& job)
{
    const auto* const saved = dynamic_cast<const LocalDbJobEntity*>(job.entity.get());
    return saved && saved->isRowGone();
}

/// Held by the one process that runs the jobs.
std::wstring lockOf(const JobStore& store)
{
    return store.path() + L".running";
}

std::string accountOf(const IJobEntity& entity)
{
    const auto* const saved = dynamic_cast<const LocalDbJobEntity*>(&entity);
    return saved ? saved->account() : std::string();
}

void setStatus(const Job& job, JobState state)
{
    try {
        job.entity->SetStatus(state);
    }
    catch (...) {
        log::error(L"job " + utils::toWstring(job.id) + L" doesn't take its state: " + wordsOfCaught());
    }
}

} // namespace

JobRunner::JobRunner(const JobManagerOptions& options)
    : m_options(options), m_store(JobStore::at(JobStore::currentPath())), m_events(options.onEvent)
{}

bool JobRunner::start()
{
    m_store->expectHandovers(true);
    JobStore::setManagers(m_store);
    const bool isClaimed = claim();
    if (!isClaimed && m_claim.wasTaken())
        log::info(L"another process runs the jobs of " + m_store->path());
    else if (!isClaimed)
        log::error(L"nobody can run the jobs, since their lock can't be opened: " + lockOf(*m_store));
    if ((isClaimed || m_claim.wasTaken()) && startThreads())
        return true;
    stop();
    return false;
}

bool JobRunner::startThreads()
{
    const unsigned workers = std::clamp(m_options.workers, 1U, mostWorkers);
    bool isStarted = true;
    for (unsigned i = 0; i < workers && isStarted; ++i)
        isStarted = m_workers.start([self = shared_from_this()] { self->work(); });
    isStarted = isStarted && m_watcher.start([self = shared_from_this()] { self->watch(); });
    if (isStarted && m_events.isUsed())
        isStarted = m_teller.start([self = shared_from_this()] { self->m_events.run(); });
    if (!isStarted)
        log::error(L"the system has no threads for the jobs");
    return isStarted;
}

bool JobRunner::stop()
{
    using Clock = BoundedThreads::Clock;
    const auto end = Clock::now() + std::clamp<std::chrono::milliseconds>(m_options.stopWithin, leastPatience, std::chrono::hours(24));
    m_board.stop();
    const bool haveJobsEnded = endJobs(end);
    const bool areWorkersGone = m_workers.endBy(end);
    m_events.close();
    const bool isAllTold = m_teller.endBy(std::max(end, Clock::now() + leastPatience));
    if (!isAllTold)
        log::warning(L"the callback for job events outlasts the stop of the job manager");
    JobStore::setManagers(nullptr);
    m_store->expectHandovers(false);
    // Otherwise the last of the threads gives the jobs free.
    if (m_watcher.endBy(std::max(end, Clock::now() + leastPatience)) && areWorkersGone) {
        m_store->close();
        m_claim.release();
    }
    return haveJobsEnded && areWorkersGone && isAllTold;
}

/// Breaks off what doesn't end in time.   Returns: whether there was nothing to break off.
bool JobRunner::endJobs(BoundedThreads::Clock::time_point end)
{
    if (m_workers.awaitBy(end))
        return true;
    m_runs.breakOff();
    if (m_workers.awaitBy(BoundedThreads::Clock::now() + patienceWithBrokenOff))
        log::warning(L"jobs were cut off by the stop of the job manager; the next start runs them again");
    else
        log::warning(L"jobs outlast the stop of the job manager; their rows stay until they end");
    return false;
}

void JobRunner::changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace)
{
    m_runs.changeSession(next, replace);
    m_board.retryAll();
}

void JobRunner::breakOff()
{
    m_board.stop();
    m_events.silence();
    m_runs.breakOff();
}

void JobRunner::awaitBrokenOff()
{
    const std::size_t own = JobRun::current() ? 1 : 0; // a job may call exit
    m_board.waitForRunning(own, patienceWithBrokenOff);
}

void JobRunner::abandon()
{
    const auto end = BoundedThreads::Clock::now() + leastPatience;
    m_workers.endBy(end);
    m_watcher.endBy(end);
    m_teller.endBy(end);
}

void JobRunner::add(const std::shared_ptr<IJobEntity>& entity)
{
    const Job job{entity->JobId(), entity->GetCreateTime(), entity, accountOf(*entity)};
    const std::lock_guard lock(m_addMutex);
    m_store->handedOver(job.id);
    if (m_board.isStopped())
        log::warning(L"the job manager is stopped; the row of job " + utils::toWstring(job.id) + L" stays for its next start");
    else if (!m_runsJobs)
        log::info(L"another process runs the jobs; it finds the row of job " + utils::toWstring(job.id));
    else if (m_board.knows(job.id))
        log::warning(L"job " + utils::toWstring(job.id) + L" was added before");
    else if (hasRunAlready(job))
        log::info(L"job " + utils::toWstring(job.id) + L" was found by its row and has run already");
    else
        addKnown(job);
}

// The event first: the job may run as soon as the board has it.
void JobRunner::addKnown(const Job& job)
{
    setStatus(job, JobState::Waiting);
    tell(JobEvent::Kind::Added, job, JobState::Waiting);
    m_board.add(job);
}

void JobRunner::tell(JobEvent::Kind kind, const Job& job, JobState state, const ErrorCode& error)
{
    m_events.post({kind, job.id, state, error, job.entity});
}

// --- running

void JobRunner::work()
{
    for (Job job = m_board.next(); job.entity; job = m_board.next())
        run(job);
}

void JobRunner::run(const Job& job)
{
    const JobRun thisRun(m_runs);
    if (thisRun.isCutOff() || !thisRun.isOf(job.account))
        m_board.putBack(job);
    else
        runWhole(job, thisRun);
}

void JobRunner::runWhole(const Job& job, const JobRun& thisRun)
{
    setStatus(job, JobState::Running);
    tell(JobEvent::Kind::Started, job, JobState::Running);
    const Outcome outcome = outcomeOf(job);
    if (isCutOff(job, thisRun, outcome)) {
        setStatus(job, JobState::Waiting);
        tell(JobEvent::Kind::CutOff, job, JobState::Waiting);
        m_board.putBack(job);
        return;
    }
    setStatus(job, outcome.state);
    dropRow(job);
    tell(JobEvent::Kind::Ended, job, outcome.state, outcome.error);
    m_board.ended(job);
}

// A job that has dropped its row, or never had one, has ended all the same.
bool JobRunner::isCutOff(const Job& job, const JobRun& thisRun, const Outcome& outcome)
{
    return outcome.state == JobState::Failed && thisRun.isCutOff() && m_store->contains(job.id).value_or(true);
}

JobRunner::Outcome JobRunner::outcomeOf(const Job& job)
{
    try {
        return {job.entity->Run() ? JobState::Succeeded : JobState::Failed, {}};
    }
    catch (...) {
        const std::wstring words = wordsOfCaught();
        log::error(L"job " + utils::toWstring(job.id) + L" ended with an exception: " + words);
        return {JobState::Failed, ErrorCode(error::exception, makeGenericError(words))};
    }
}

// Jobs drop their own rows; this is for those that couldn't.
void JobRunner::dropRow(const Job& job)
{
    if (m_store->erase(job.id))
        return;
    const std::lock_guard lock(m_addMutex);
    m_spent.insert(job.id);
}

// --- watching

void JobRunner::watch()
{
    while (!m_board.waitForStop(watchInterval)) {
        if (m_runsJobs)
            lookForRows();
        else if (claim())
            log::info(L"this process runs the jobs from now on: " + m_store->path());
    }
}

// The jobs are this process's before their rows are read: what is added meanwhile goes straight to the board.
bool JobRunner::claim()
{
    if (!m_claim.acquire(lockOf(*m_store), 0))
        return false;
    {
        const std::lock_guard lock(m_addMutex);
        m_runsJobs = true;
    }
    lookForRows();
    removeStrayCopies(*m_store);
    return true;
}

void JobRunner::lookForRows()
{
    dropSpentRows();
    const std::optional<JobStore::Mark> mark = m_store->mark();
    if (!mark || mark == m_mark)
        return;
    if (!m_mark || m_mark->opened != mark->opened)
        m_lastRank = 0;
    m_mark = mark;
    loadRows();
}

void JobRunner::loadRows()
{
    constexpr std::size_t atOnce = 256;
    while (!m_board.isStopped()) {
        const std::optional<std::vector<JobRow>> rows = m_store->rowsAfter(m_lastRank, atOnce);
        if (!rows)
            m_mark.reset(); // once more, the next time
        if (!rows || rows->empty())
            return;
        for (const JobRow& row : *rows)
            load(row);
        m_lastRank = rows->back().rank;
    }
}

// The row may be that of a job which ended since it was read, so it is looked for again once the job is known to be none of ours. A job
// leaves the board after its row is gone.
void JobRunner::load(const JobRow& row)
{
    if (m_kept.count(row.id) != 0 || isExpectedElsewhere(row.id) || !m_store->contains(row.id).value_or(false))
        return;
    const std::shared_ptr<IJobEntity> entity = entityOf(row);
    if (!entity)
        return;
    const std::lock_guard lock(m_addMutex);
    if (!m_board.knows(row.id) && !m_board.isStopped())
        addKnown({row.id, row.createTime, entity, row.account});
}

bool JobRunner::isExpectedElsewhere(const std::string& id)
{
    const std::lock_guard lock(m_addMutex);
    return m_board.knows(id) || m_spent.count(id) != 0 || m_store->awaitsHandover(id);
}

std::shared_ptr<IJobEntity> JobRunner::entityOf(const JobRow& row)
{
    try {
        const std::shared_ptr<LocalDbJobEntity> entity = makeJobEntity(row.typeKey);
        if (!entity) {
            keepRow(row, L"its type is unknown");
            return nullptr;
        }
        if (!entity->LoadFromJson(row.json) || entity->JobId() != row.id) {
            keepRow(row, L"it can't be read");
            return nullptr;
        }
        entity->SetType(static_cast<JobType>(row.jobType));
        entity->setAccount(row.account);
        return entity;
    }
    catch (...) {
        keepRow(row, wordsOfCaught().c_str());
        return nullptr;
    }
}

void JobRunner::keepRow(const JobRow& row, const wchar_t* reason)
{
    m_kept.insert(row.id);
    log::error(L"the row of job " + utils::toWstring(row.id) + L" is left alone: " + reason);
}

void JobRunner::dropSpentRows()
{
    std::vector<std::string> spent;
    {
        const std::lock_guard lock(m_addMutex);
        spent.assign(m_spent.begin(), m_spent.end());
    }
    for (const std::string& id : spent) {
        if (!m_store->erase(id))
            return;
        const std::lock_guard lock(m_addMutex);
        m_spent.erase(id);
    }
}

} // namespace orlo
