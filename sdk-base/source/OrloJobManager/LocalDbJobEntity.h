#pragma once

#include <OrloJobManager/JobEntity.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace orlo {

class JobStore;

/// A job with a row in the local job database: that of the job manager, or the one at the place of the moment while none runs, where the
/// next Start finds it. A failure leaves a line in the log and what was saved before as it was.
class ORLO_JOB_API LocalDbJobEntity : public JobEntity
{
public:
    LocalDbJobEntity();
    ~LocalDbJobEntity() override;

    /// Returns: whether the job has no row any more.
    bool remove() override;
    /// Writes the row, or replaces it. The first time the job becomes that of the account that is signed in, and stays so whoever saves it
    /// again.   Returns: whether it is on disk.
    bool save() override;
    /// The account that handed the job over, as its row has it; empty where nobody was signed in, and before the first save.
    std::string account() const;
    /// For a job that is rebuilt from its row: its account is that of the row.
    void setAccount(const std::string& account);
    /// Whether this object wrote a row which is there no more. False where the database can't be read.
    bool isRowGone() const;

protected:
    /// Whether the run that this thread is in was cut off: by the end of the process, by Stop, or because whoever was signed in when it
    /// began has gone. What fails then is no outcome, and a Run that gives false and leaves the row alone is done again.
    static bool isRunCutOff();
    /// Whether the host wants the job no more, which breaks its run off. What fails then ends the job, as cancelled.
    static bool isRunCancelled();
    /// Whether the host wants the job to run again, now that this run has failed: JobManagerOptions::onFailure is asked, once for each run.
    /// A Run that hears yes gives false, and leaves the row and whatever the next run needs. For a Run that doesn't ask the manager does,
    /// behind it.
    /// cause: what the step that failed gave.   Returns: false outside of a run, and of one that was cancelled.
    static bool isRunKept(const ErrorCode& cause);

private:
    /// Where the row was written, so that it can be deleted there whatever the place of the moment is.
    std::shared_ptr<JobStore> m_store;
    std::optional<std::string> m_account;
};

/// Makes an empty job, which LoadFromJson fills.
using JobEntityFactory = std::function<std::shared_ptr<LocalDbJobEntity>()>;

/// Registers the class behind a job type key for as long as the object lives: a static of the library that has the class.
class ORLO_JOB_API JobEntityRegistration
{
public:
    /// A key that is taken stays with its first owner.   Threads: any; static initialisers included.
    JobEntityRegistration(std::string jobTypeKey, JobEntityFactory factory);
    ~JobEntityRegistration();

    JobEntityRegistration(const JobEntityRegistration&) = delete;
    JobEntityRegistration& operator=(const JobEntityRegistration&) = delete;

private:
    std::string m_jobTypeKey;
    bool m_owner;
};

/// Returns: an empty job of the class behind the key; null for an unknown key.   Threads: any.
ORLO_JOB_API std::shared_ptr<LocalDbJobEntity> makeJobEntity(const std::string& jobTypeKey);

} // namespace orlo
