#pragma once

#include <BaseCommon/CancelToken.h>
#include <BaseCommon/Progress.h>
#include <OrloJobManager/IJobEntity.h>
#include <OrloJobManager/JobAnswers.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orlo {

/// Something that happened to a job.
struct JobEvent
{
    /// CutOff: the run was broken off, by Stop, by Pause or because the user signed out, and says nothing of the job, which waits again.
    /// Kept: the run has failed, and the host's onFailure keeps the job, which runs again behind a pause.
    enum class Kind { Added, Started, Ended, CutOff, Kept };

    Kind kind = Kind::Added;
    std::string jobId;
    /// The state that the event brought: Waiting, Running, and at the end Succeeded or Failed; Waiting for a run that was cut off and for
    /// a job that is kept.
    JobState state = JobState::Waiting;
    /// Of an ended job: what its ErrorInfo() gives, or the exception that left its Run(); isCancelled() of one that was cancelled or
    /// removed. Of a kept one: what onFailure was asked about.
    ErrorCode error;
    std::shared_ptr<IJobEntity> job;
};

struct JobManagerOptions
{
    /// How many jobs run at once; at least one does.
    unsigned workers = 2;
    /// How long Stop waits for the jobs that run before it breaks them off.
    std::chrono::milliseconds stopWithin{10000};
    /// Told of every event, one at a time and in order, on a thread of its own: it may take its time and holds no job up.
    /// What it throws is dropped.
    std::function<void(const JobEvent&)> onEvent;

    // A host that sets none of the next ones has jobs that end with their first failure, start as soon as they may, and can't be cancelled.
    // All of them are called on threads of the library, several at once, never under a lock: they may call the manager. They should come
    // back soon: a job that ends, a worker, or Stop waits for them.

    /// Asked when the run of a job has failed, once for each run; null drops the job, with its row and what else it holds, as an end. Not
    /// asked of a run that was cut off or cancelled, nor of a job that has no row (any more), which can't be kept. keepIfItMaySucceed is a
    /// ready-made answer. A kept job keeps its row and its copy of the file; it has no outcome yet. It rests, runs again, and so on; what
    /// is kept when the manager stops or the process ends runs at the next Start, without a pause. error: the cause, as the step that
    /// failed gave it; for a job class that doesn't ask (LocalDbJobEntity::isRunKept) the exception that left its Run(), or what its
    /// ErrorInfo() gives in the state Failed.   What it throws counts as Keep: nothing is lost that way.
    std::function<FailedJob(const IJobEntity& job, const ErrorCode& error)> onFailure;
    /// How long a kept job rests: firstPause behind its first failure, then twice as long each time, longestPause at the most, all of it
    /// with a tenth more or less as chance wants it. At least as long as the platform's answer asked for, within longestPause.
    std::chrono::milliseconds firstPause{5000};
    std::chrono::milliseconds longestPause{std::chrono::minutes(15)};
    /// Asked before jobs start; null: they may. While the answer is no none starts, and it is asked again each second as long as a job
    /// waits for it. isSomebodySignedIn and http::isSignedInAndOnline are ready-made ones.   What it throws counts as no.
    std::function<bool()> mayStart;
    /// The token that cancels a job; asked once for each, when the manager takes it in. A job that is cancelled, whether it runs, waits,
    /// rests or is paused, ends as failed with error::cancelled, without its row and its copy; one whose run is cut off at the same time
    /// stays.   What it throws leaves the job without a token.
    std::function<CancelToken(const IJobEntity& job)> cancelTokenOf;
    /// Told how far the run of a job is: at most ten times a second, one call at a time for each job, and the last state before the job's
    /// end is told. Each run counts from nothing. What it throws is dropped; it must not wait for Stop.
    std::function<void(const IJobEntity& job, const Progress& progress)> onProgress;
};

/// How a job that waits or runs stands.
struct JobDetails
{
    std::string jobId;
    std::wstring fileName; ///< empty for a job without a file, as is the project
    std::string projectId;
    JobState state = JobState::Waiting; ///< or Running
    bool isPaused = false;              ///< by Pause
    unsigned attempts = 0;              ///< runs that have failed so far, those of earlier processes included
    ErrorCode lastFailure;              ///< of the last one that failed in this process; without an error where none has
    /// When a job that rests behind a failure runs again; empty for all others.
    std::optional<std::chrono::system_clock::time_point> nextRun;
};

/// Runs jobs, and runs those that an earlier process left behind. One process at a time runs the jobs of a database; what the others
/// add is left to it, and when it ends or dies one of them takes over within a second or two.
///
/// Jobs of one class start in the order of their operator <, and where that sees no difference in the order of their addition; the
/// classes among each other go by create time. IsCanRun is asked before, with the jobs that run and the other ones that wait, and
/// asked again whenever a job has ended. A job that was saved while somebody was signed in runs while that account is signed in, and waits
/// otherwise: a sign-out, or a sign-in of another account, breaks its run off. If a job that may start has a waiting GetPriorityJob(), that
/// one is tried first. The database is "jobs.db" below utils::getLocalDbCachePath(). A job that ended, well or badly, has no row any more.
class ORLO_JOB_API IJobManager
{
public:
    IJobManager();
    virtual ~IJobManager();

    IJobManager(const IJobManager&) = delete;
    IJobManager& operator=(const IJobManager&) = delete;

    /// Opens the job database at its place of the moment, makes a job of every row and starts the workers. A row whose type nobody
    /// registered, or that can't be read, stays for a later start; a corrupt database is set aside under another name, and a new one begun
    /// with the rows that can still be read. Does nothing if the manager runs already.
    /// Returns: false, with a line in the log, if the database can't be opened or no thread can be made.   Threads: any.
    static bool Start(const JobManagerOptions& options);

    /// Starts no more jobs and waits for those that run, as long as the options allow; what has not ended then is broken off, its requests
    /// are cancelled, and it gets two more seconds to come back. The rows of jobs that wait, and of those that were broken off, stay for
    /// the next start. A job that outlasts even that keeps the database's jobs from being run by anybody else until it ends. A process that
    /// ends without Stop breaks its jobs off in the same way. Returns: false if a job had to be broken off, or the event callback was still
    /// busy.   Threads: any; from a job or the event callback too, which are not waited for then.
    static bool Stop();

    /// Returns: the job manager; null before Start and after Stop. The object is never destroyed: a pointer from before Stop leads to
    /// a manager that has no jobs, and takes none until the next Start.   Threads: any, as for all operations below.
    static IJobManager* Get() noexcept;

    /// The jobs that wait or run, in the order of their addition.
    virtual IJobEntity::List GetJobs() const = 0;
    /// Returns: the job with the id; null if there is none.
    virtual std::shared_ptr<IJobEntity> GetJob(const std::string& jobId) const = 0;
    /// Hands a saved job over to be run. If another process runs the jobs, its row is left to that one, and the log says so. A job that was
    /// saved before the manager started and has been run by its row since is not run again.
    virtual void AddJob(std::shared_ptr<IJobEntity> job) = 0;

    /// Waits until no job runs or could run now: those of accounts that aren't signed in don't count, nor those that rest behind a failure,
    /// are paused, or wait for mayStart, as it answered last.   Returns: false if the time ran out or the manager was stopped with jobs
    /// left.
    virtual bool WaitForIdle(std::chrono::milliseconds atMost) = 0;
    /// Waits until the job has ended, through all its pauses; one that the manager doesn't know counts as ended.   Returns: as above.
    virtual bool WaitForJob(const std::string& jobId, std::chrono::milliseconds atMost) = 0;
    /// Whether this process is the one that runs the jobs.
    virtual bool RunsJobs() const = 0;

    // Of a job that the manager knows, as GetJob does; each returns whether it does.

    /// A kept job rests no longer: it runs as soon as it may.
    virtual bool Retry(const std::string& jobId) = 0;
    /// Drops the job with its row and its copy; its end is told as cancelled. One that runs is broken off first, and ends when its Run has
    /// come back: if that has succeeded meanwhile, the job has succeeded.
    virtual bool Remove(const std::string& jobId) = 0;
    /// The job doesn't start until Resume; one that runs is broken off, and waits. A pause isn't saved: the next Start knows nothing of it.
    virtual bool Pause(const std::string& jobId) = 0;
    virtual bool Resume(const std::string& jobId) = 0;
    /// Returns: empty for a job that the manager doesn't know.
    virtual std::optional<JobDetails> GetJobDetails(const std::string& jobId) const = 0;
};

} // namespace orlo
