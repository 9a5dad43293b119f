#pragma once

#include "../Call/TextTable.h"

#include <OrloProjectManager/Design/ConfigType.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/Design/ISpaceConfig.h>

namespace orlo {

const TextTable<SpaceType>& spaceTypeTexts();
const TextTable<ConfigScope>& configScopeTexts();
const TextTable<CurveType>& curveTypeTexts();
/// As the kinds of configuration stand in an address.
const TextTable<ConfigType>& configTypeTexts();
/// Intended: as an item's document tells its schema, which is not what stands in its address.
const TextTable<ConfigType>& schemaKeyTexts();

} // namespace orlo
