#pragma once

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Interruption.h>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orlo {

class ProgressMeter;
class UserSession;
class JobRun;

/// The account that is signed in; empty where there is none.
std::string signedInAccount();
/// Whether a job that this account handed over may run now: any may where nobody was signed in then.
bool mayRunNow(const std::string& account);

/// The runs of the jobs of one manager, so that they can be broken off.   Threads: any.
class JobRuns
{
public:
    /// From now on all runs are broken off, new ones as they begin; that of the calling thread isn't.
    void breakOff();
    /// That of one job, if it runs.
    void breakOff(const std::string& jobId);
    /// Breaks off the runs of all other accounts than that of the next session before they can ask for anything in its name.
    void changeSession(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace);

private:
    friend class JobRun;
    void add(JobRun& run);
    void drop(const JobRun& run);

    std::mutex m_mutex;
    std::vector<JobRun*> m_runs;
    bool m_areBrokenOff = false;
};

/// One run of a job, on the thread that runs it.
class JobRun
{
public:
    struct Terms
    {
        std::string jobId;
        std::shared_ptr<Interruption> cancel; ///< requested when the host wants the job no more
        std::shared_ptr<ProgressMeter> meter; ///< null where nobody wants to know
        /// Whether the job is kept if its run fails for that cause. Empty: it isn't, and nobody is asked.
        std::function<bool(const ErrorCode& cause)> keeps;
    };

    JobRun(JobRuns& all, Terms terms);
    ~JobRun();
    JobRun(const JobRun&) = delete;
    JobRun& operator=(const JobRun&) = delete;

    /// Whether the run is that of this account's user, or the job nobody's.
    bool isOf(const std::string& account) const { return account.empty() || account == m_account; }

    /// Whether the run was broken off, or whoever was signed in when it began is no more: what failed since may not be the job's fault.
    bool isCutOff() const;
    /// Whether the host wants the job no more; a run that was cut off says nothing of that.
    bool isCancelled() const { return !isCutOff() && m_terms.cancel && m_terms.cancel->isRequested(); }

    /// Whether the run's failure isn't the job's end. Of a run that is neither cut off nor cancelled the host is asked, once: the cause of
    /// the first failure counts.
    bool isKept(const ErrorCode& cause);
    /// The cause that the host was asked about; none if he wasn't.
    const std::optional<ErrorCode>& cause() const { return m_cause; }

    /// That of the calling thread; null on any other.
    static JobRun* current();

private:
    friend class JobRuns;

    JobRuns& m_all;
    const Terms m_terms;
    const std::shared_ptr<Interruption> m_cutOff;
    const Interruption::Scope m_scope;
    /// Of its beginning.
    std::shared_ptr<UserSession> m_session;
    std::string m_account;
    std::optional<ErrorCode> m_cause;
    bool m_isKept = false;
};

} // namespace orlo
