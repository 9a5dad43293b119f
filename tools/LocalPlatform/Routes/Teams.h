#pragma once

#include "../Seeds.h"

#include <string>

namespace orlo::platform {

/// Refused with 404 if it isn't there.
void requireTeam(World& world, const std::string& teamId);

} // namespace orlo::platform
