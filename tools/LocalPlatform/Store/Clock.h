#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace orlo::platform {

/// The machine's clock plus an offset, so that expiry can be tried without waiting.
class Clock
{
public:
    /// Back with a negative number. The clock goes on ticking from there.
    void move(std::int64_t seconds) { m_offsetSeconds += seconds; }
    std::int64_t seconds() const;
    /// As records carry it: "2024-05-01T08:30:00.000Z"
    std::string text() const;

private:
    std::int64_t milliseconds() const;

    std::atomic<std::int64_t> m_offsetSeconds{0};
};

} // namespace orlo::platform
