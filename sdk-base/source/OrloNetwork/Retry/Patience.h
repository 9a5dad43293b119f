#pragma once

#include <OrloNetwork/NetworkCommon.h>

#include <chrono>
#include <optional>

namespace orlo::http {

/// How often and with which pauses a call is repeated: what holds when it starts holds to its end.
struct ORLO_NETWORK_API Patience
{
    static Patience now();

    /// repetition: 1 for the first.   error: of the attempt that failed.
    std::chrono::milliseconds pauseBefore(unsigned repetition, const ErrorCode& error) const;

    unsigned limit = 0;
    std::chrono::seconds interval{0};
    std::optional<BackoffPolicy> backoff;
};

} // namespace orlo::http
