#include "JobRunner.h"

#include "JobLog.h"
#include "StrayCopies.h"

#include <BaseCommon/ProgressMeter.h>
#include <BaseCommon/ProgressReports.h>
#include <BaseCommon/RequestError.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IFileJob.h>
#include <OrloJobManager/LocalDbJobEntity.h>

#include <algorithm>
#include <random>
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

/// What a job that has failed says of it.
ErrorCode errorInfoOf(const Job& job)
{
    try {
        ErrorCode error = job.entity->ErrorInfo();
        if (!error.isClear())
            return error;
    }
    catch (...) {
        log::error(L"job " + utils::toWstring(job.id) + L" can't say why it failed: " + wordsOfCaught());
    }
    return {error::exception, makeGenericError(L"the job failed")};
}

template <class Work>
void giveUp(const Job& job, const Work& work)
{
    try {
        work();
    }
    catch (...) {
        log::error(L"job " + utils::toWstring(job.id) + L" can't drop what it holds: " + wordsOfCaught());
    }
}

/// A tenth more or less, so that jobs which failed together don't come back together.
std::chrono::milliseconds varied(std::chrono::milliseconds pause)
{
    thread_local std::minstd_rand random{std::random_device{}()};
    return std::chrono::milliseconds(pause.count() * std::uniform_int_distribution<long long>{900, 1100}(random) / 1000);
}

} // namespace

JobRunner::JobRunner(const JobManagerOptions& options)
    : m_options(options), m_store(JobStore::at(JobStore::currentPath())), m_board(options.mayStart), m_events(options.onEvent)
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
    const Job job = jobOf(entity); // the host is asked without the lock
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

Job JobRunner::jobOf(const std::shared_ptr<IJobEntity>& entity)
{
    Job job{entity->JobId(), entity->GetCreateTime(), entity, accountOf(*entity), nullptr};
    job.cancel = std::make_shared<JobCancel>(tokenOf(*entity), [self = weak_from_this()] {
        if (const auto runner = self.lock())
            runner->m_board.noteCancelled();
    });
    return job;
}

std::shared_ptr<Interruption> JobRunner::tokenOf(const IJobEntity& entity) const
{
    if (!m_options.cancelTokenOf || !m_runsJobs)
        return nullptr;
    try {
        return m_options.cancelTokenOf(entity).interruption();
    }
    catch (...) {
        log::warning(L"the token of a job can't be told, so that it has none: " + wordsOfCaught());
        return nullptr;
    }
}

// The event first: the job may run as soon as the board has it.
void JobRunner::addKnown(const Job& job, unsigned attempts)
{
    setStatus(job, JobState::Waiting);
    tell(JobEvent::Kind::Added, job, JobState::Waiting);
    m_board.add(job, attempts);
}

bool JobRunner::remove(const std::string& id)
{
    const auto removal = m_board.takeOut(id);
    if (!removal)
        return false;
    removal->job.cancel->request();
    if (removal->isCallers)
        drop(removal->job);
    return true;
}

bool JobRunner::pause(const std::string& id)
{
    const bool isKnown = m_board.pause(id);
    m_runs.breakOff(id);
    return isKnown;
}

std::optional<JobDetails> JobRunner::details(const std::string& id) const
{
    const auto standing = m_board.standing(id);
    if (!standing)
        return std::nullopt;
    JobDetails details;
    details.jobId = id;
    details.state = standing->isRunning ? JobState::Running : JobState::Waiting;
    details.isPaused = standing->isPaused;
    details.attempts = standing->attempts;
    details.lastFailure = standing->lastFailure;
    if (standing->restsUntil)
        details.nextRun = std::chrono::system_clock::now() +
                          std::chrono::duration_cast<std::chrono::milliseconds>(*standing->restsUntil - JobBoard::Clock::now());
    if (const auto* const ofFile = dynamic_cast<const IFileJob*>(standing->entity.get())) {
        details.fileName = ofFile->GetFileName();
        details.projectId = ofFile->GetProjectId();
    }
    return details;
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
    const auto meter = m_options.onProgress ? std::make_shared<ProgressMeter>() : nullptr;
    JobRun thisRun(m_runs, termsOf(job, meter));
    if (thisRun.isCutOff() || !thisRun.isOf(job.account) || m_board.isPaused(job.id))
        m_board.putBack(job);
    else if (job.cancel->isRequested())
        drop(job);
    else
        runWhole(job, thisRun, meter);
}

JobRun::Terms JobRunner::termsOf(const Job& job, const std::shared_ptr<ProgressMeter>& meter) const
{
    JobRun::Terms terms{job.id, job.cancel->interruption(), meter, nullptr};
    if (m_options.onFailure)
        terms.keeps = [this, &job](const ErrorCode& cause) { return keeps(*job.entity, cause); };
    return terms;
}

void JobRunner::runWhole(const Job& job, JobRun& thisRun, const std::shared_ptr<ProgressMeter>& meter)
{
    setStatus(job, JobState::Running);
    tell(JobEvent::Kind::Started, job, JobState::Running);
    const Outcome outcome = watchedOutcomeOf(job, meter);
    const bool mayStay = isKept(job, thisRun, outcome);
    if (isCutOff(job, thisRun, outcome)) {
        setStatus(job, JobState::Waiting);
        tell(JobEvent::Kind::CutOff, job, JobState::Waiting);
        m_board.putBack(job);
        return;
    }
    if (mayStay)
        return rest(job, *thisRun.cause());
    if (outcome.state == JobState::Failed && thisRun.isCancelled())
        return drop(job);
    setStatus(job, outcome.state);
    dropRow(job);
    tell(JobEvent::Kind::Ended, job, outcome.state, outcome.error);
    m_board.ended(job);
}

JobRunner::Outcome JobRunner::watchedOutcomeOf(const Job& job, const std::shared_ptr<ProgressMeter>& meter) const
{
    if (!meter)
        return outcomeOf(job);
    const ProgressReports reports(meter, [this, &job](const Progress& progress) { m_options.onProgress(*job.entity, progress); });
    return outcomeOf(job);
}

// Whoever asked during the run has his answer. A job without a row can't be kept, and one that was cancelled meanwhile isn't.
bool JobRunner::isKept(const Job& job, JobRun& thisRun, const Outcome& outcome)
{
    if (outcome.state != JobState::Failed || !m_options.onFailure || thisRun.isCutOff() || !m_store->contains(job.id).value_or(true))
        return false;
    if (!thisRun.cause() && !thisRun.isCancelled())
        thisRun.isKept(causeOf(job, outcome));
    return thisRun.cause() && thisRun.isKept(*thisRun.cause()) && !thisRun.isCancelled();
}

ErrorCode JobRunner::causeOf(const Job& job, const Outcome& outcome)
{
    if (!outcome.error.isClear())
        return outcome.error;
    setStatus(job, JobState::Failed);
    return errorInfoOf(job);
}

bool JobRunner::keeps(const IJobEntity& job, const ErrorCode& cause) const
{
    try {
        return m_options.onFailure(job, cause) == FailedJob::Keep;
    }
    catch (...) {
        log::warning(L"whether a job is kept can't be said, so that it is: " + wordsOfCaught());
        return true;
    }
}

void JobRunner::rest(const Job& job, const ErrorCode& cause)
{
    const auto standing = m_board.standing(job.id);
    const unsigned attempts = standing ? standing->attempts + 1 : 1;
    m_store->setAttempts(job.id, attempts);
    setStatus(job, JobState::Waiting);
    m_board.rest(job, pauseBehind(attempts, cause), cause, [&] { tell(JobEvent::Kind::Kept, job, JobState::Waiting, cause); });
}

std::chrono::milliseconds JobRunner::pauseBehind(unsigned attempts, const ErrorCode& cause) const
{
    using std::chrono::milliseconds;
    constexpr milliseconds shortest{1};
    const milliseconds longest = std::clamp<milliseconds>(m_options.longestPause, shortest, std::chrono::hours(24 * 365));
    milliseconds pause = std::clamp(m_options.firstPause, shortest, longest);
    for (unsigned i = 1; i < attempts && pause < longest; ++i)
        pause *= 2;
    pause = varied(pause);
    if (const RequestDetails* const details = requestDetails(cause); details && details->retryAfter)
        pause = std::max<milliseconds>(pause, std::min<std::chrono::seconds>(*details->retryAfter, std::chrono::hours(24 * 365)));
    return std::min(pause, longest);
}

void JobRunner::drop(const Job& job)
{
    setStatus(job, JobState::Failed);
    giveUp(job, [&] { job.entity->remove(); });
    dropRow(job);
    giveUp(job, [&] {
        if (auto* const ofFile = dynamic_cast<IFileJob*>(job.entity.get()))
            ofFile->Cancelled();
    });
    tell(JobEvent::Kind::Ended, job, JobState::Failed, cancelledError());
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
        for (const Job& job : m_board.takeCancelled())
            drop(job);
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
    const Job job = jobOf(entity);
    const std::lock_guard lock(m_addMutex);
    if (!m_board.knows(row.id) && !m_board.isStopped())
        addKnown(job, row.attempts);
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
