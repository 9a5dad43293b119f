#pragma once

#include <OrloProjectManager/Design/ISpaceConfig.h>

#include <optional>
#include <string>
#include <vector>

namespace session {

/// The number that the text of a level begins with: "-4.200", "3.600", "±0.000". None if it tells no number.
std::optional<double> heightOf(const std::wstring& level);

/// The floors among some spaces, from the lowest up by their architecture level. Those whose level tells no number come last.
std::vector<std::shared_ptr<orlo::ISpaceConfigItem>> storeysFromBelow(const std::vector<std::shared_ptr<orlo::ISpaceConfigItem>>& spaces);

/// The spaces seen from the side, as an SVG document: storeys stacked on the ground and below it, in the blocks of what they belong to.
std::string spacesPicture(const orlo::ISpaceConfig& spaces);

} // namespace session
