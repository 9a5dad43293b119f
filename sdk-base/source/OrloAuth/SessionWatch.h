#pragma once

#include <OrloAuth/Export.h>

#include <functional>
#include <memory>

namespace orlo {

class UserSession;

/// Called on the thread that signs in or out, instead of the change itself, and makes it: `replace` puts `next`, null where nobody is
/// signed in any more, in the place of the current session.
using SessionWatch = void (*)(const std::shared_ptr<UserSession>& next, const std::function<void()>& replace);

/// For the library whose work must not go on under another name. There is one watch, for the life of the process.   Threads: any.
ORLO_AUTH_API void watchSessions(SessionWatch watch);

} // namespace orlo
