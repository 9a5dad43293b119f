#pragma once

#include "../Seeds.h"

#include <string>

namespace orlo::platform {

/// The records of datasets, as all services tell them; a condition follows.
inline const std::string selectDatasets =
    "SELECT folderId, id, modelingDatasetId, name, nameSpace, schemaDefinition, codeVersion, tipVersion, type, "
    "specialtyId, ownerId, description, teamId, projectId, creationTime FROM dataset ";

/// Refused with 404 if it isn't there.
void requireDataset(World& world, const std::string& datasetId);
/// Refused with 404 unless the dataset has a version of that number.
void requireVersion(World& world, const std::string& datasetId, int number);

} // namespace orlo::platform
