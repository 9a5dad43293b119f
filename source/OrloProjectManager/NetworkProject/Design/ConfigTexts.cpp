#include "ConfigTexts.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

const TextTable<SpaceType>& spaceTypeTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<SpaceType>(
        {{SpaceType::Site, L"Site"}, {SpaceType::Building, L"Building"}, {SpaceType::Region, L"Region"}, {SpaceType::Floor, L"Floor"}},
        SpaceType::Site));
    return table;
}

const TextTable<ConfigScope>& configScopeTexts()
{
    static const auto& table =
        utils::neverDestroyed(new const TextTable<ConfigScope>({{ConfigScope::Project, L"Project"}}, ConfigScope::Project));
    return table;
}

const TextTable<CurveType>& curveTypeTexts()
{
    static const auto& table = utils::neverDestroyed(
        new const TextTable<CurveType>({{CurveType::Line, L"axisLine"}, {CurveType::Arc, L"axisArc"}}, CurveType::None));
    return table;
}

const TextTable<ConfigType>& configTypeTexts()
{
    // The first of two rows with one text is the value that the text reads as.
    static const auto& table = utils::neverDestroyed(new const TextTable<ConfigType>({{ConfigType::SpaceConfig, L"SpaceConfig"},
                                                                                      {ConfigType::GridConfig, L"GridConfig"},
                                                                                      {ConfigType::SubItem, L"SubItem"},
                                                                                      {ConfigType::ItemElevationSet, L"SpaceConfig"},
                                                                                      {ConfigType::ItemGridConfig, L"GridConfig"},
                                                                                      {ConfigType::Coordinate, L"Coordinate"}},
                                                                                     ConfigType::SpaceConfig));
    return table;
}

const TextTable<ConfigType>& schemaKeyTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<ConfigType>({{ConfigType::SubItem, L"SubItem"},
                                                                                      {ConfigType::ItemElevationSet, L"ElevationSet"},
                                                                                      {ConfigType::ItemGridConfig, L"GridConfig"},
                                                                                      {ConfigType::Coordinate, L"Coordinate"}},
                                                                                     ConfigType::SubItem));
    return table;
}

} // namespace orlo
