#pragma once

#include <OrloAuth/Export.h>

#include <memory>

namespace orlo {

class UserSession;

/// Gets another token for the user of a session whose token the platform refused. One thread asks the host's token source; the others wait
/// for what comes of that, a minute at the most, unless their work is broken off.
/// Returns: whether the same user is signed in with another token now.   Threads: any. Never throws.
ORLO_AUTH_API bool renewToken(const std::shared_ptr<UserSession>& refused) noexcept;

} // namespace orlo
