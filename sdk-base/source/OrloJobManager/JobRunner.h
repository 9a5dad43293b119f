#pragma once

#include "BoundedThreads.h"
#include "EventDispatcher.h"
#include "JobBoard.h"
#include "JobRun.h"
#include "JobStore.h"

#include <BaseCommon/Platform.h>
#include <OrloJobManager/IJobManager.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>

namespace orlo {

/// One run of the job manager, from Start to Stop. Its threads share it: what they still use after Stop goes with the last of them, and
/// with it the lock that says whose jobs these are.
class JobRunner : public std::enable_shared_from_this<JobRunner>
{
public:
    explicit JobRunner(const JobManagerOptions& options);

    bool open() { return m_store->open(); }
    bool start();
    bool stop();
    /// Makes the change; what runs for another account is broken off before, and what waits for this one is looked at behind it.
    void changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace);

    /// For the end of the process: from now on no job starts, nobody is told anything, and the jobs that run are broken off.
    void breakOff();
    /// Waits a moment for those.
    void awaitBrokenOff();
    /// Lets go of the threads.
    void abandon();

    void add(const std::shared_ptr<IJobEntity>& entity);
    bool remove(const std::string& id);
    bool pause(const std::string& id);
    std::optional<JobDetails> details(const std::string& id) const;
    bool runsJobs() const { return m_runsJobs; }
    JobBoard& board() { return m_board; }

private:
    struct Outcome
    {
        JobState state = JobState::Failed;
        ErrorCode error;
    };

    bool startThreads();
    bool endJobs(BoundedThreads::Clock::time_point end);

    void work();
    void run(const Job& job);
    void runWhole(const Job& job, JobRun& thisRun, const std::shared_ptr<ProgressMeter>& meter);
    bool isCutOff(const Job& job, const JobRun& thisRun, const Outcome& outcome);
    bool isKept(const Job& job, JobRun& thisRun, const Outcome& outcome);
    static ErrorCode causeOf(const Job& job, const Outcome& outcome);
    static Outcome outcomeOf(const Job& job);
    Outcome watchedOutcomeOf(const Job& job, const std::shared_ptr<ProgressMeter>& meter) const;
    JobRun::Terms termsOf(const Job& job, const std::shared_ptr<ProgressMeter>& meter) const;
    bool keeps(const IJobEntity& job, const ErrorCode& cause) const;
    void rest(const Job& job, const ErrorCode& cause);
    std::chrono::milliseconds pauseBehind(unsigned attempts, const ErrorCode& cause) const;
    void dropRow(const Job& job);
    /// Ends a job that doesn't run any more, or never has, as cancelled.
    void drop(const Job& job);
    void tell(JobEvent::Kind kind, const Job& job, JobState state, const ErrorCode& error = {});

    void watch();
    bool claim();
    void lookForRows();
    void loadRows();
    void load(const JobRow& row);
    bool isExpectedElsewhere(const std::string& id);
    std::shared_ptr<IJobEntity> entityOf(const JobRow& row);
    void keepRow(const JobRow& row, const wchar_t* reason);
    Job jobOf(const std::shared_ptr<IJobEntity>& entity);
    std::shared_ptr<Interruption> tokenOf(const IJobEntity& entity) const;
    void addKnown(const Job& job, unsigned attempts = 0);
    void dropSpentRows();

    const JobManagerOptions m_options;
    const std::shared_ptr<JobStore> m_store;
    JobBoard m_board;
    JobRuns m_runs;
    EventDispatcher m_events;
    BoundedThreads m_workers;
    BoundedThreads m_watcher;
    BoundedThreads m_teller;

    utils::FileLock m_claim;
    std::atomic<bool> m_runsJobs{false};
    /// Whoever adds a job holds this, so that no row becomes a job twice.
    std::mutex m_addMutex;
    /// Jobs that ended but whose row couldn't be dropped yet: they must not run again.
    std::unordered_set<std::string> m_spent;

    // Of the watching thread, and of Start before it.
    std::optional<JobStore::Mark> m_mark;
    std::int64_t m_lastRank = 0;
    std::unordered_set<std::string> m_kept;
};

} // namespace orlo
