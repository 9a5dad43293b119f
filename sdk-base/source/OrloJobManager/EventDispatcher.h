#pragma once

#include <OrloJobManager/IJobManager.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace orlo {

/// Hands the events of the jobs to the host on a thread that waits for nothing else.   Threads: any.
class EventDispatcher
{
public:
    using Callback = std::function<void(const JobEvent&)>;

    explicit EventDispatcher(Callback callback) : m_callback(std::move(callback)) {}

    /// Whether anybody listens.
    bool isUsed() const { return static_cast<bool>(m_callback); }
    void post(JobEvent event);
    /// What comes later is dropped; run ends when all that came before has been told.
    void close();
    /// Tells no more, not even what has come.
    void silence();

    /// The thread's work.
    void run();

private:
    void tell(JobEvent event) const;

    const Callback m_callback;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<JobEvent> m_events;
    bool m_isClosed = false;
    std::atomic<bool> m_isSilent{false};
};

} // namespace orlo
