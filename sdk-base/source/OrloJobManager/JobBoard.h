#pragma once

#include "JobQueue.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

namespace orlo {

/// Who waits and who runs. Workers fetch jobs here, one worker at a time looks for the next; adding is never held up by that.
/// Threads: any.
class JobBoard
{
public:
    /// Returns: false if a job with the id waits or runs.
    bool add(const Job& job);
    /// Waits for a job that may start; it counts as running then.   Returns: a job without an entity once the board is stopped.
    Job next();
    /// The job neither waits nor runs any more.
    void ended(const Job& job);
    /// The job runs no more, and waits again.
    void putBack(const Job& job);

    /// From now on no job starts.
    void stop();
    bool isStopped() const { return m_isStopped; }
    /// Waits for the stop.   Returns: whether it came in time.
    bool waitForStop(std::chrono::milliseconds atMost);

    bool knows(const std::string& id) const { return find(id) != nullptr; }
    std::shared_ptr<IJobEntity> find(const std::string& id) const;
    /// In the order of their addition.
    IJobEntity::List jobs() const;
    /// Somebody has signed in or out, so that other jobs may run now.
    void retryAll();

    /// Waits until no job runs or could run; those of accounts that aren't signed in don't count.
    /// Returns: false if the time ran out, or the board was stopped, first.
    bool waitForIdle(std::chrono::milliseconds atMost);
    bool waitForJob(const std::string& id, std::chrono::milliseconds atMost);
    /// Waits until no more than so many jobs run; the stop of the board doesn't end this.
    bool waitForRunning(std::size_t atMostJobs, std::chrono::milliseconds atMost);

private:
    struct Known
    {
        std::shared_ptr<IJobEntity> entity;
        std::uint64_t number;
        std::string account;
    };

    Job pick(std::unique_lock<std::mutex>& lock);
    Job choose(const std::vector<Job>& arrivals, bool hasEnded, const IJobEntity::List& running);
    void leaveRunning(const Job& job);
    bool isIdle() const;
    template <class Condition>
    bool waitFor(std::chrono::milliseconds atMost, const Condition& condition);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::atomic<bool> m_isStopped{false};
    std::unordered_map<std::string, Known> m_known;
    std::uint64_t m_lastNumber = 0;
    IJobEntity::List m_running;
    /// Since the last look: what came, whether a job ended, and whether there is anything to look for.
    std::vector<Job> m_arrivals;
    bool m_hasEnded = false;
    bool m_hasNews = false;
    /// Held by the one worker that looks; the queue is its alone.
    bool m_isPicking = false;
    JobQueue m_queue;
};

} // namespace orlo
