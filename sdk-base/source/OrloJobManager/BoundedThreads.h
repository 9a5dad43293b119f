#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace orlo {

/// Threads that are waited for as long as a bound allows and let go after it. What they use must be theirs to share: a thread that was
/// let go may still run when this object is gstarted. Not for two threads at once.
class BoundedThreads
{
public:
    using Clock = std::chrono::steady_clock;

    BoundedThreads();
    ~BoundedThreads();
    BoundedThreads(const BoundedThreads&) = delete;
    BoundedThreads& operator=(const BoundedThreads&) = delete;

    /// Returns: false if the system has no thread to give.
    bool start(std::function<void()> body);

    /// Waits for all of them but the one that calls.   Returns: whether those have ended.
    bool awaitBy(Clock::time_point end) const;
    /// The same, and lets go of those that have not, and of the one that calls.   Returns: whether all have ended.
    bool endBy(Clock::time_point end);

private:
    struct Signal;
    struct Thread
    {
        bool isOwn() const { return thread.get_id() == std::this_thread::get_id(); }

        std::thread thread;
        std::shared_ptr<bool> hasEnded;
    };

    std::shared_ptr<Signal> m_signal;
    std::vector<Thread> m_threads;
};

} // namespace orlo
