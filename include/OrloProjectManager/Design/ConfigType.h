#pragma once

namespace orlo {

/// The kinds of stored configuration.
enum class ConfigType : int {
    SpaceConfig = 0,
    GridConfig = 1,
    SubItem = 2,
    ItemElevationSet = 3, ///< stored under "SpaceConfig", wrapped as "ElevationSet"
    ItemGridConfig = 4,   ///< stored under "GridConfig", wrapped as "GridConfig"
    Coordinate = 5
};

/// What a configuration belongs to.
enum class ConfigScope : int { Project = 0 };

} // namespace orlo
