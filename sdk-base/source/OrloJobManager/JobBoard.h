#pragma once

#include "JobQueue.h"

#include <BaseCommon/ErrorCode.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orlo {

/// Who waits and who runs. Workers fetch jobs here, one worker at a time looks for the next; adding is never held up by that.
/// Threads: any.
class JobBoard
{
public:
    using Clock = std::chrono::steady_clock;

    /// What the board knows of a job.
    struct Standing
    {
        std::shared_ptr<IJobEntity> entity;
        bool isRunning = false;
        bool isPaused = false;
        /// Of its runs, how many have failed, and the failure of the last one.
        unsigned attempts = 0;
        ErrorCode lastFailure;
        /// Until when it rests behind a failure.
        std::optional<Clock::time_point> restsUntil;
    };

    /// mayStart: asked before jobs start, without the lock, by one worker at a time; null: they may.
    explicit JobBoard(std::function<bool()> mayStart = nullptr) : m_mayStart(std::move(mayStart)) {}

    /// Returns: false if a job with the id waits or runs.
    bool add(const Job& job, unsigned attempts = 0);
    /// Waits for a job that may start; it counts as running then.   Returns: a job without an entity once the board is stopped.
    Job next();
    /// The job neither waits nor runs any more.
    void ended(const Job& job);
    /// The job runs no more, and waits again.
    void putBack(const Job& job);
    /// The run has failed, and the job waits so long before it runs again.   told: called first, with the lock.
    void rest(const Job& job, std::chrono::milliseconds pause, const ErrorCode& failure, const std::function<void()>& told);

    // Each of the next returns whether the board knows the job.

    /// Ends the rest of a job behind a failure.
    bool retry(const std::string& id);
    /// From now on the job doesn't start; a run that is under way is the caller's to break off.
    bool pause(const std::string& id);
    bool resume(const std::string& id);
    bool isPaused(const std::string& id) const;
    std::optional<Standing> standing(const std::string& id) const;

    /// A job that is to go.
    struct Removal
    {
        Job job;
        /// It doesn't run: the caller sees to its end, and then to ended().
        bool isCallers = false;
    };
    std::optional<Removal> takeOut(const std::string& id);
    /// Those that don't run and are cancelled, to be seen to in the same way.
    std::vector<Job> takeCancelled();
    /// A job was cancelled: whoever waits for the stop looks.
    void noteCancelled();

    /// From now on no job starts.
    void stop();
    bool isStopped() const { return m_isStopped; }
    /// Waits for the stop, or until jobs were cancelled.   Returns: whether the stop has come.
    bool waitForStop(std::chrono::milliseconds atMost);

    bool knows(const std::string& id) const { return find(id) != nullptr; }
    std::shared_ptr<IJobEntity> find(const std::string& id) const;
    /// In the order of their addition.
    IJobEntity::List jobs() const;
    /// Somebody has signed in or out, so that other jobs may run now.
    void retryAll();

    /// Waits until no job runs or could run; those of accounts that aren't signed in don't count, nor those that rest or are paused, nor
    /// any that waits while none may start. Returns: false if the time ran out, or the board was stopped, first.
    bool waitForIdle(std::chrono::milliseconds atMost);
    bool waitForJob(const std::string& id, std::chrono::milliseconds atMost);
    /// Waits until no more than so many jobs run, and nobody asks whether they may; the stop of the board doesn't end this.
    bool waitForRunning(std::size_t atMostJobs, std::chrono::milliseconds atMost);

private:
    struct Known
    {
        Job job;
        std::uint64_t number = 0;
        Standing standing;
        /// Somebody sees to its end.
        bool isLeaving = false;
    };
    /// What one look for the next job is about.
    struct Look
    {
        std::vector<Job> arrivals;
        std::vector<std::shared_ptr<IJobEntity>> departures;
        bool hasEnded = false;
        IJobEntity::List running;
    };
    struct Choice
    {
        Job job;
        bool isShut = false;
    };

    Job pick(std::unique_lock<std::mutex>& lock);
    Look beginLook();
    Choice choose(const Look& look);
    bool isShut();
    Job started(Job job);
    void leaveRunning(const Job& job);
    Known* known(const std::string& id);
    void forgetArrival(const Job& job);
    void setOut(const Job& job);
    void bringBack(const Known& known);
    void endRest(Known& known);
    void wakeRested(Clock::time_point now);
    bool mayPick(Clock::time_point now) const;
    std::optional<Clock::time_point> nextLook() const;
    void waitForNews(std::unique_lock<std::mutex>& lock);
    bool isIdle() const;
    bool countsAsBusy(const Known& known, const std::string& account) const;
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
    std::vector<std::shared_ptr<IJobEntity>> m_departures;
    bool m_hasEnded = false;
    bool m_hasNews = false;
    /// Held by the one worker that looks; the queue is its alone.
    bool m_isPicking = false;
    JobQueue m_queue;

    const std::function<bool()> m_mayStart;
    /// The thread that asks for it.
    std::optional<std::thread::id> m_asker;
    bool m_hasAskingFailed = false; ///< the asker's
    /// No job may start; it is asked again then.
    std::optional<Clock::time_point> m_shutUntil;
    std::set<std::pair<Clock::time_point, std::string>> m_resting;
    bool m_areSomeCancelled = false;
};

} // namespace orlo
