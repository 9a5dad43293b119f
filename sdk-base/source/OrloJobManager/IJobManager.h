#pragma once

#include <OrloJobManager/IJobEntity.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace orlo {

/// Something that happened to a job.
struct JobEvent
{
    /// CutOff: the run was broken off, by Stop or because the user signed out, and says nothing of the job, which waits again.
    enum class Kind { Added, Started, Ended, CutOff };

    Kind kind = Kind::Added;
    std::string jobId;
    /// The state that the event brought: Waiting, Running, and at the end Succeeded or Failed; Waiting for a run that was cut off.
    JobState state = JobState::Waiting;
    /// Of an ended job: what its ErrorInfo() gives, or the exception that left its Run().
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

    /// Waits until no job runs or could run now: those of accounts that aren't signed in don't count.   Returns: false if the time ran out
    /// or the manager was stopped with jobs left.
    virtual bool WaitForIdle(std::chrono::milliseconds atMost) = 0;
    /// Waits until the job has ended; one that the manager doesn't know counts as ended.   Returns: as above.
    virtual bool WaitForJob(const std::string& jobId, std::chrono::milliseconds atMost) = 0;
    /// Whether this process is the one that runs the jobs.
    virtual bool RunsJobs() const = 0;
};

} // namespace orlo
