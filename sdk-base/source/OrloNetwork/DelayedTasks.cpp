#include "DelayedTasks.h"

#include "WorkPermit.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace orlo::http {

namespace {

using Clock = std::chrono::steady_clock;

void runOne(std::function<void()> task)
{
    try {
        // A request that starts while the statics go would meet cpprestsdk's pool half destroyed.
        if (const WorkPermit permit; permit)
            task();
    }
    catch (...) { // the thread serves other tasks, and an exception out of it would end the process
    }
}

class DelayedTasks
{
public:
    void add(Clock::time_point when, std::function<void()> task)
    {
        const std::lock_guard lock(m_mutex);
        const auto entry = m_tasks.emplace(when, std::move(task));
        if (m_threadRuns) {
            m_changed.notify_one();
            return;
        }
        try {
            std::thread([this] { run(); }).detach();
            m_threadRuns = true;
        }
        catch (...) {
            m_tasks.erase(entry);
            throw;
        }
    }

private:
    void run()
    {
        std::unique_lock lock(m_mutex);
        while (!m_tasks.empty()) {
            const auto next = m_tasks.begin();
            if (Clock::now() < next->first) {
                // A copy: the entry may be gone when the wait ends.
                const Clock::time_point when = next->first;
                m_changed.wait_until(lock, when);
                continue;
            }
            auto task = std::move(next->second);
            m_tasks.erase(next);
            lock.unlock();
            runOne(std::move(task)); // what the task held goes before the lock is taken again: its end may add a task
            lock.lock();
        }
        m_threadRuns = false;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::multimap<Clock::time_point, std::function<void()>> m_tasks;
    bool m_threadRuns = false;
};

} // namespace

void runAfter(std::chrono::seconds pause, std::function<void()> task)
{
    // Never destroyed: its thread may outlive the statics when the process ends.
    static DelayedTasks& tasks = *new DelayedTasks;
    tasks.add(Clock::now() + pause, std::move(task));
}

} // namespace orlo::http
