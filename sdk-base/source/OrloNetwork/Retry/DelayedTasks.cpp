#include "DelayedTasks.h"

#include "../Lifetime/WorkPermit.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>

#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace orlo::http {

namespace {

using Clock = std::chrono::steady_clock;

struct DelayedTask
{
    Clock::time_point when;
    std::function<void()> work;
    bool isAwaited = false;
};

/// The task goes with the call, before the lock is taken again: its end may add another one.
void runOne(DelayedTask task) // NOLINT(performance-unnecessary-value-param)
{
    try {
        // A request that starts while the statics go would meet them half destroyed.
        if (const WorkPermit permit(task.isAwaited); permit) {
            task.work();
            utils::forgetOpenSslOfThread(); // as this task may be the thread's last
        }
    }
    catch (...) { // the thread serves other tasks, and an exception out of it would end the process
    }
}

class DelayedTasks
{
public:
    /// Returns: the number of the task.
    unsigned long long add(DelayedTask task)
    {
        const std::lock_guard lock(m_mutex);
        const auto entry = m_tasks.emplace(std::pair(task.when, ++m_lastNumber), std::move(task)).first;
        if (m_threadRuns) {
            m_changed.notify_one();
            return m_lastNumber;
        }
        try {
            std::thread([this] { run(); }).detach();
            m_threadRuns = true;
        }
        catch (...) {
            m_tasks.erase(entry);
            throw;
        }
        return m_lastNumber;
    }

    /// Runs the task now, if it still waits.
    void hasten(Clock::time_point when, unsigned long long number)
    {
        const std::lock_guard lock(m_mutex);
        auto task = m_tasks.extract({when, number});
        if (!task)
            return;
        task.key().first = Clock::now();
        m_tasks.insert(std::move(task));
        m_changed.notify_one();
    }

private:
    void run()
    {
        std::unique_lock lock(m_mutex);
        while (!m_tasks.empty()) {
            const auto next = m_tasks.begin();
            if (Clock::now() < next->first.first) {
                // A copy: the entry may be gone when the wait ends.
                const Clock::time_point when = next->first.first;
                m_changed.wait_until(lock, when);
                continue;
            }
            DelayedTask task = std::move(next->second);
            m_tasks.erase(next);
            lock.unlock();
            runOne(std::move(task)); // what the task held goes before the lock is taken again: its end may add a task
            lock.lock();
        }
        m_threadRuns = false;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    /// By their times, and among those of one time in the order in which they came.
    std::map<std::pair<Clock::time_point, unsigned long long>, DelayedTask> m_tasks;
    unsigned long long m_lastNumber = 0;
    bool m_threadRuns = false;
};

} // namespace

void runAfter(std::chrono::milliseconds pause, std::function<void()> task, const std::shared_ptr<Interruption>& interruption)
{
    static DelayedTasks& tasks = utils::neverDestroyed(new DelayedTasks);
    const Clock::time_point when = Clock::now() + pause;
    if (!interruption) {
        tasks.add({when, std::move(task), false});
        return;
    }
    // The task owns what listens for it, and hears nothing any more when it has run.
    const auto listening = std::make_shared<std::optional<Interruption::Listener>>();
    const unsigned long long number =
        tasks.add({when, [task = std::move(task), listening] { task(); }, Interruption::isAwaited(interruption)});
    try {
        listening->emplace(interruption, [when, number] { tasks.hasten(when, number); });
    }
    catch (const std::exception&) { // no memory for it: the task waits its whole pause then
    }
}

} // namespace orlo::http
