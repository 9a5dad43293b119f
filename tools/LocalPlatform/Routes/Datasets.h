#pragma once

#include "../Seeds.h"

#include <string>

namespace orlo::platform {

/// Refused with 404 if it isn't there.
void requireDataset(World& world, const std::string& datasetId);
/// Refused with 404 unless the dataset has a version of that number.
void requireVersion(World& world, const std::string& datasetId, int number);

} // namespace orlo::platform
