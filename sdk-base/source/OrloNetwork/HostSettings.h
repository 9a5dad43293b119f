#pragma once

#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloNetwork/Export.h>

namespace orlo {

/// What a host hands to OrloConfigManager::Configure and to UserSession::SignIn.
struct HostSettings
{
    OrloConfig config;
    UserIdentity user;
};

/// The defaults, with what the environment says instead:
/// - ORLO_URL: base address of the platform, for the services "project", "structure", "module", "message", "authorization" and "slproxy"
/// - ORLO_TOKEN, ORLO_USER, ORLO_ACCOUNT: the user. The token is masked in every later log line
/// - ORLO_CA, ORLO_PROXY: OrloConfig::caFile and OrloConfig::proxy
/// - ORLO_TIMEOUT: OrloConfig::httpTimeoutSeconds, a whole number above 0; anything else is ignored, with a warning in the log
///
/// A variable that is empty counts as not set. Nothing is configured, and nobody signed in, by the call itself.
/// Requests: none.   Threads: any, while nobody changes the environment.
[[nodiscard]] ORLO_NETWORK_API HostSettings configFromEnvironment(HostSettings defaults = {});

} // namespace orlo
