#pragma once

#include <BaseCommon/Export.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace orlo {

/// Breaks off work that somebody waits for. Whoever carries the work out asks for it between two steps and listens to it during a step,
/// and comes back with a failure, which then says nothing of the work itself.   Threads: any.
class ORLO_BASE_API Interruption
{
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Tells all who listen, once. Must not throw out of a listener.
    void request();
    bool isRequested() const;
    /// Waits no longer than that.   Returns: whether it was requested.
    bool waitFor(std::chrono::milliseconds atMost) const;

    /// That of the work which this thread does; null where nobody waits for it.
    static std::shared_ptr<Interruption> current() noexcept;

    /// Makes it that of this thread's work, until the scope ends; null makes the work one that nobody waits for.
    class ORLO_BASE_API Scope
    {
    public:
        explicit Scope(std::shared_ptr<Interruption> interruption);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        friend class Interruption;
        const std::shared_ptr<Interruption> m_interruption;
        const Scope* const m_outer;
    };

    /// Calls the function when the interruption is requested, at once if that has happened. The call may still run when the listener is
    /// gone, so the function must own what it uses.
    class ORLO_BASE_API Listener
    {
    public:
        /// With null it hears nothing.
        Listener(std::shared_ptr<Interruption> interruption, std::function<void()> heard);
        ~Listener();
        Listener(const Listener&) = delete;
        Listener& operator=(const Listener&) = delete;

    private:
        const std::shared_ptr<Interruption> m_interruption;
        unsigned long long m_number = 0;
    };

private:
    using Listeners = std::map<unsigned long long, std::function<void()>>;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_requested;
    bool m_isRequested = false;
    unsigned long long m_lastNumber = 0;
    Listeners m_listeners;
};

} // namespace orlo
