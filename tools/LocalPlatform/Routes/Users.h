#pragma once

#include "../LocalPlatform.h"
#include "../Server/Router.h"

#include <cstdint>
#include <string>

namespace orlo::platform {

void addUser(World& world, const User& user);
/// Refused with 404 for a token that nobody has.
void setRevoked(World& world, const std::string& accessToken, bool revoked);
/// In so many seconds of the platform's clock; 0 or less: at once.
void expireIn(World& world, const std::string& accessToken, std::int64_t seconds);
/// Refused with 401 if nobody has the token, or it is no longer good.
User userOfToken(World& world, const std::string& accessToken);

} // namespace orlo::platform
