#pragma once

#include <BaseCommon/Export.h>
#include <BaseCommon/Progress.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

namespace orlo {

/// Counts the bytes of some work, and of the work that it is a part of.   Threads: any.
class ORLO_BASE_API ProgressMeter
{
public:
    enum class Kind { ofCall, ofFile };

    explicit ProgressMeter(std::shared_ptr<ProgressMeter> outer = nullptr);
    ~ProgressMeter();
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    /// Negative ones are taken back.
    void count(Kind kind, std::int64_t done, std::int64_t inAll);
    Progress now() const;

    /// Which of its states it is in.
    unsigned long long state() const;
    /// Waits until its state is another one, or it was closed.   Returns: whether it is another one.
    bool waitForChange(unsigned long long seen);
    /// Waits for its closing.   Returns: whether it came in time.
    bool waitForClose(std::chrono::milliseconds atMost);
    /// Nobody waits any more.
    void close();

private:
    const std::shared_ptr<ProgressMeter> m_outer;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::condition_variable m_closed;
    Progress m_progress;
    unsigned long long m_state = 0;
    bool m_isClosed = false;
};

} // namespace orlo
