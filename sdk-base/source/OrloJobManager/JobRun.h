#pragma once

#include <BaseCommon/Interruption.h>

#include <memory>
#include <mutex>
#include <vector>

namespace orlo {

class UserSession;

/// The runs of the jobs of one manager, so that they can be broken off.   Threads: any.
class JobRuns
{
public:
    void add(const std::shared_ptr<Interruption>& run);
    void drop(const std::shared_ptr<Interruption>& run);
    /// From now on all runs are broken off, new ones as they begin; that of the calling thread isn't.
    void breakOff();

private:
    std::mutex m_mutex;
    std::vector<std::shared_ptr<Interruption>> m_runs;
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

    /// Whether the run was broken off, or whoever was signed in when it began is no more: what failed since may not be the job's fault.
    bool isCutOff() const;

    /// That of the calling thread; null on any other.
    static const JobRun* current();

private:
    JobRuns& m_all;
    const std::shared_ptr<Interruption> m_interruption;
    const std::shared_ptr<UserSession> m_session;
    const Interruption::Scope m_scope;
};

} // namespace orlo
