#pragma once

#include <system_error>

namespace orlo::test {

/// The system's number of an error, as a failure of the transport tells it.
constexpr int numberOf(std::errc error)
{
    return static_cast<int>(error);
}

inline constexpr int resetCode = numberOf(std::errc::connection_reset);
inline constexpr int timeoutCode = numberOf(std::errc::timed_out);
inline constexpr int abortedCode = numberOf(std::errc::connection_aborted);
inline constexpr int unreachableCode = numberOf(std::errc::host_unreachable); ///< a refused connection too
inline constexpr int cancelledCode = numberOf(std::errc::operation_canceled);

} // namespace orlo::test
