#pragma once

#include <OrloAuth/Export.h>

#include <chrono>
#include <memory>

namespace orlo {

class UserSession;

/// Gets another token for the user of a session whose token the platform refused. A thread of its own asks the host's token source; all who
/// were refused wait for what comes of that, a minute at the most, unless their work is broken off or the process ends. made: when the
/// request was. Returns: whether the same user is signed in with another token now.   Threads: any. Never throws.
ORLO_AUTH_API bool renewToken(const std::shared_ptr<UserSession>& refused, std::chrono::steady_clock::time_point made) noexcept;

} // namespace orlo
