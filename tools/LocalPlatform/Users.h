#pragma once

#include "LocalPlatform.h"
#include "Router.h"

#include <string>

namespace orlo::platform {

void addUser(World& world, const User& user);
/// Refused with 401 if nobody has the token.
User userOfToken(World& world, const std::string& accessToken);

} // namespace orlo::platform
