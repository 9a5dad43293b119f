#pragma once

#include <BaseCommon/Export.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace orlo {

class ProgressMeter;

/// Breaks off work that somebody waits for. Whoever carries the work out asks for it between two steps and listens to it during a step,
/// and comes back with a failure, which then says nothing of the work itself.   Threads: any.
class ORLO_BASE_API Interruption
{
public:
    Interruption();
    ~Interruption();

    /// Of a part of other work.
    struct Bounds
    {
        std::shared_ptr<Interruption> outer; ///< requested with it; null: it stands for itself
        std::shared_ptr<Interruption> token; ///< the host's: requested with it too, as cancelled
        std::shared_ptr<ProgressMeter> meter;
        bool isAwaited = true; ///< an operation or a job waits for the part
    };
    static std::shared_ptr<Interruption> within(const Bounds& bounds);

    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Tells all who listen, once. Must not throw out of a listener.
    void request();
    bool isRequested() const;
    /// Whether it was the host who asked, so that what failed is to be called cancelled.
    bool isCancelled() const;
    /// Null counts as no.
    static bool isAwaited(const std::shared_ptr<Interruption>& interruption) { return interruption && interruption->m_isAwaited; }
    /// Null where nobody wants to know how far the work is.
    const std::shared_ptr<ProgressMeter>& meter() const { return m_meter; }
    /// Waits no longer than that.   Returns: whether it was requested.
    bool waitFor(std::chrono::milliseconds atMost) const;

    /// That of the work which this thread does; null where nobody waits for it.
    static std::shared_ptr<Interruption> current() noexcept;

    /// Makes it that of this thread's work, until the scope ends, in whatever order those of a thread do; null makes the work one that
    /// nobody waits for.
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
        Scope* m_outer;
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

    void listenTo(const std::shared_ptr<Interruption>& other, std::optional<Listener>& listener, const std::shared_ptr<Interruption>& self);

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_requested;
    bool m_isRequested = false;
    unsigned long long m_lastNumber = 0;
    Listeners m_listeners;

    // Set once, before anybody else knows it.
    bool m_isAwaited = true;
    std::shared_ptr<ProgressMeter> m_meter;
    std::shared_ptr<Interruption> m_outer;
    std::shared_ptr<Interruption> m_token;
    std::optional<Listener> m_byOuter;
    std::optional<Listener> m_byToken;
};

} // namespace orlo
