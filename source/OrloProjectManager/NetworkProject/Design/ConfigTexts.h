#pragma once

#include "../Call/TextTable.h"

#include <OrloProjectManager/Design/ConfigType.h>
#include <OrloProjectManager/Design/IAxisGrid.h>
#include <OrloProjectManager/Design/ISpaceConfig.h>

namespace orlo {

const TextTable<SpaceType>& spaceTypeTexts();
const TextTable<ConfigScope>& configScopeTexts();
const TextTable<CurveType>& curveTypeTexts();
/// As the kinds of configuration stand in an address. The wrapper around a stored item has other texts.
const TextTable<ConfigType>& configTypeTexts();

} // namespace orlo
