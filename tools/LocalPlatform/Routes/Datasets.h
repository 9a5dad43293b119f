#pragma once

#include "../LocalPlatform.h"
#include "../Server/Router.h"

#include <string>

namespace orlo::platform {

std::string createDataset(World& world, const DatasetSeed& dataset);
/// Refused with 404 if it isn't there.
void requireDataset(World& world, const std::string& datasetId);
/// Refused with 404 unless the dataset has a version of that number.
void requireVersion(World& world, const std::string& datasetId, int number);

/// A font's bytes go to the blobs.
std::string createFont(World& world, const FontSeed& font);

} // namespace orlo::platform
