#pragma once

#include "../Seeds.h"

#include <string>

namespace orlo::platform {

/// Refused with 401 if nobody has the token, or it is no longer good.
User userOfToken(World& world, const std::string& accessToken);
/// Refused with 409 if the account's quota allows no further project.
void requireRoomForProject(World& world, const std::string& accountId);

} // namespace orlo::platform
