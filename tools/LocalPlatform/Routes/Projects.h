#pragma once

#include "../Seeds.h"

#include <string>

namespace orlo::platform {

/// Refused with 404 if it isn't there.
void requireProject(World& world, const std::string& projectId);
/// Refused with 403 unless the account owns the project or may write something in it.
void requireWriter(World& world, const std::string& projectId, const std::string& accountId);

/// The id itself, a new one if it is empty; 409 if the table has a row with it already.
std::string freeId(World& world, const std::string& table, const std::string& id);

} // namespace orlo::platform
