#pragma once

#include <BaseCommon/ProgressMeter.h>
#include <OrloNetwork/Export.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace orlo::http {

/// The attempts at one request, for whoever makes it and can't see the loop that repeats it.   Threads: any.
class ORLO_NETWORK_API Attempts
{
public:
    /// One more begins: what the one before has counted is taken back from its meter.
    void begin();
    /// Returns: 1 for the first.
    unsigned number() const { return m_number; }

    /// Counts for the attempt that is under way.
    void count(const std::shared_ptr<ProgressMeter>& meter, ProgressMeter::Kind kind, std::int64_t done, std::int64_t inAll);

    /// Those of the request that this thread is about to make; null outside of all loops.
    static std::shared_ptr<Attempts> current() noexcept;

    class ORLO_NETWORK_API Scope
    {
    public:
        explicit Scope(std::shared_ptr<Attempts> attempts);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        friend class Attempts;
        const std::shared_ptr<Attempts> m_attempts;
        const Scope* const m_outer;
    };

private:
    struct Counted
    {
        std::int64_t done = 0;
        std::int64_t inAll = 0;
    };

    std::atomic<unsigned> m_number{0};
    std::mutex m_mutex;
    std::shared_ptr<ProgressMeter> m_meter;
    std::array<Counted, 2> m_counted{}; ///< by kind
};

} // namespace orlo::http
