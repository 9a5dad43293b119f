#pragma once

#include <OrloNetwork/Export.h>

#include <chrono>

namespace orlo::http {

/// Whether the platform can be reached: opens a connection to the address that is configured for the service "project", or to the proxy
/// where there is one, and ends it without a word. The answer is remembered for three seconds.   atMost: how long it may take.
/// Returns: false where no address is configured, where the process ends, and where the operation or the job that asks is broken off.
/// Requests: none; whether somebody who answers there is the platform isn't known.   Threads: any; blocks the caller.
ORLO_NETWORK_API bool isPlatformWithinReach(std::chrono::milliseconds atMost = std::chrono::seconds(2)) noexcept;

/// As JobManagerOptions::mayStart.
ORLO_NETWORK_API bool isSignedInAndOnline() noexcept;

} // namespace orlo::http
