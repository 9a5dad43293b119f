#include "IJobManager.h"

#include "JobLog.h"
#include "JobRunner.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/ProcessEnd.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/SessionWatch.h>

#include <atomic>
#include <mutex>
#include <utility>

namespace orlo {

namespace {

/// The object behind Get(): it stays, what runs comes and goes.
class JobManager : public IJobManager
{
public:
    bool start(const JobManagerOptions& options);
    bool stop();
    void changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace);
    /// For the end of the process.
    void breakOff();
    void awaitBrokenOff();
    bool isStarted() const { return m_isStarted; }

    IJobEntity::List GetJobs() const override;
    std::shared_ptr<IJobEntity> GetJob(const std::string& jobId) const override;
    void AddJob(std::shared_ptr<IJobEntity> job) override;
    bool WaitForIdle(std::chrono::milliseconds atMost) override;
    bool WaitForJob(const std::string& jobId, std::chrono::milliseconds atMost) override;
    bool RunsJobs() const override;
    bool Retry(const std::string& jobId) override;
    bool Remove(const std::string& jobId) override;
    bool Pause(const std::string& jobId) override;
    bool Resume(const std::string& jobId) override;
    std::optional<JobDetails> GetJobDetails(const std::string& jobId) const override;

private:
    std::shared_ptr<JobRunner> runner() const;
    /// Returns: false once the end of the process has come; the runner stays then as it is.
    bool setRunner(std::shared_ptr<JobRunner> runner);

    /// Start and Stop, one at a time.
    std::mutex m_lifeMutex;
    mutable std::mutex m_runnerMutex;
    std::shared_ptr<JobRunner> m_runner;
    bool m_doesProcessEnd = false;
    std::atomic<bool> m_isStarted{false};
};

JobManager& manager()
{
    static JobManager& instance = utils::neverDestroyed(new JobManager);
    return instance;
}

// A process that ends without Stop breaks its jobs off.
void watchEndOfProcess()
{
    ProcessEnd::at(ProcessEnd::Step::breakOffJobs, [] { manager().breakOff(); });
    ProcessEnd::at(ProcessEnd::Step::awaitJobs, [] { manager().awaitBrokenOff(); });
    static const ProcessEnd::Watch watch{};
}

bool JobManager::start(const JobManagerOptions& options)
{
    watchEndOfProcess();
    watchSessions([](const auto& next, const auto& replace) { manager().changeSession(next, replace); });
    const std::lock_guard lock(m_lifeMutex);
    if (m_isStarted) {
        log::warning(L"the job manager runs already, with the options of its first start");
        return true;
    }
    const auto starting = std::make_shared<JobRunner>(options);
    if (!starting->open())
        return false;
    // Before the rows are read: whoever saves a job from here on has somebody to hand it to.
    if (!setRunner(starting))
        return false;
    m_isStarted = true;
    if (starting->start())
        return true;
    m_isStarted = false;
    setRunner(nullptr);
    return false;
}

bool JobManager::stop()
{
    const std::lock_guard lock(m_lifeMutex);
    m_isStarted = false;
    const std::shared_ptr<JobRunner> ending = runner();
    const bool isEnded = !ending || ending->stop();
    setRunner(nullptr);
    return isEnded;
}

void JobManager::changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace)
{
    if (const auto current = runner())
        current->changeSession(next, replace);
    else
        replace();
}

void JobManager::breakOff()
{
    std::shared_ptr<JobRunner> ending;
    {
        const std::lock_guard lock(m_runnerMutex);
        m_doesProcessEnd = true;
        ending = m_runner;
    }
    if (ending)
        ending->breakOff();
}

void JobManager::awaitBrokenOff()
{
    const std::unique_lock lock(m_lifeMutex, std::try_to_lock);
    const auto ending = runner();
    if (ending)
        ending->awaitBrokenOff();
    if (lock.owns_lock() && ending) // otherwise a Stop on another thread has them
        ending->abandon();
}

std::shared_ptr<JobRunner> JobManager::runner() const
{
    const std::lock_guard lock(m_runnerMutex);
    return m_runner;
}

bool JobManager::setRunner(std::shared_ptr<JobRunner> runner)
{
    const std::lock_guard lock(m_runnerMutex);
    if (m_doesProcessEnd)
        return false;
    m_runner.swap(runner);
    return true;
}

IJobEntity::List JobManager::GetJobs() const
{
    const auto current = runner();
    return current ? current->board().jobs() : IJobEntity::List();
}

std::shared_ptr<IJobEntity> JobManager::GetJob(const std::string& jobId) const
{
    const auto current = runner();
    return current ? current->board().find(jobId) : nullptr;
}

void JobManager::AddJob(std::shared_ptr<IJobEntity> job)
{
    try {
        const auto current = runner();
        if (!job)
            log::error(L"a job that is null can't be added");
        else if (!current)
            log::warning(L"the job manager is stopped; the row of job " + utils::toWstring(job->JobId()) + L" stays for its next start");
        else
            current->add(job);
    }
    catch (...) {
        log::error(L"a job can't be added: " + wordsOfCaught());
    }
}

bool JobManager::WaitForIdle(std::chrono::milliseconds atMost)
{
    const auto current = runner();
    return !current || current->board().waitForIdle(atMost);
}

bool JobManager::WaitForJob(const std::string& jobId, std::chrono::milliseconds atMost)
{
    const auto current = runner();
    return !current || current->board().waitForJob(jobId, atMost);
}

bool JobManager::RunsJobs() const
{
    const auto current = runner();
    return current && current->runsJobs();
}

bool JobManager::Retry(const std::string& jobId)
{
    const auto current = runner();
    return current && current->board().retry(jobId);
}

bool JobManager::Remove(const std::string& jobId)
{
    const auto current = runner();
    return current && current->remove(jobId);
}

bool JobManager::Pause(const std::string& jobId)
{
    const auto current = runner();
    return current && current->pause(jobId);
}

bool JobManager::Resume(const std::string& jobId)
{
    const auto current = runner();
    return current && current->board().resume(jobId);
}

std::optional<JobDetails> JobManager::GetJobDetails(const std::string& jobId) const
{
    const auto current = runner();
    return current ? current->details(jobId) : std::nullopt;
}

} // namespace

IJobManager::IJobManager() = default;
IJobManager::~IJobManager() = default;

bool IJobManager::Start(const JobManagerOptions& options)
{
    try {
        return manager().start(options);
    }
    catch (...) {
        log::error(L"the job manager can't be started: " + wordsOfCaught());
        return false;
    }
}

bool IJobManager::Stop()
{
    try {
        return manager().stop();
    }
    catch (...) {
        log::error(L"the job manager can't be stopped: " + wordsOfCaught());
        return false;
    }
}

IJobManager* IJobManager::Get() noexcept
{
    return manager().isStarted() ? &manager() : nullptr;
}

} // namespace orlo
