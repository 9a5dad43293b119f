#pragma once

#include <BaseCommon/Interruption.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orlo {

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
    explicit JobRun(JobRuns& all);
    ~JobRun();
    JobRun(const JobRun&) = delete;
    JobRun& operator=(const JobRun&) = delete;

    /// Whether the run is that of this account's user, or the job nobody's.
    bool isOf(const std::string& account) const { return account.empty() || account == m_account; }

    /// Whether the run was broken off, or whoever was signed in when it began is no more: what failed since may not be the job's fault.
    bool isCutOff() const;

    /// That of the calling thread; null on any other.
    static const JobRun* current();

private:
    friend class JobRuns;

    JobRuns& m_all;
    const std::shared_ptr<Interruption> m_interruption;
    const Interruption::Scope m_scope;
    /// Of its beginning.
    std::shared_ptr<UserSession> m_session;
    std::string m_account;
};

} // namespace orlo
