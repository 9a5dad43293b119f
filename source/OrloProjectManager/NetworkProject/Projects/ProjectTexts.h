#pragma once

#include "../Call/TextTable.h"

#include <BaseCommon/IOrloBridge.h>
#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Projects/ProjectRecords.h>
#include <OrloProjectManager/Projects/Specialty.h>
#include <OrloProjectManager/Projects/StandardProperty.h>

namespace orlo {

const TextTable<ProjectStatus>& projectStatusTexts();
const TextTable<ProjectGridType>& projectGridTypeTexts();
const TextTable<SpecialtyType>& specialtyTexts();
const TextTable<EStandardPropertyValueType>& standardPropertyTypes();
/// Without Any, which each operation reads in its own way.
const TextTable<DatasetStatus>& datasetStatusTexts();
const TextTable<DatasetMetaKey>& datasetMetaKeys();

/// "DEFAULT" for every value without a text of its own.
std::wstring textOf(ProjectScenario scenario);
/// "Unknown" for every value without a text of its own.
std::wstring textOf(SpecialtyType type);

} // namespace orlo
