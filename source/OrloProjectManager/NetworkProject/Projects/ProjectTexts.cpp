#include "ProjectTexts.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

const TextTable<ProjectStatus>& projectStatusTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<ProjectStatus>(
        {{ProjectStatus::Ongoing, L"Ongoing"}, {ProjectStatus::Suspended, L"Suspended"}, {ProjectStatus::Completed, L"Completed"}},
        ProjectStatus::Unknown));
    return table;
}

const TextTable<ProjectGridType>& projectGridTypeTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<ProjectGridType>(
        {{ProjectGridType::TypeOne, L"TYPE_ONE"}, {ProjectGridType::TypeTwo, L"TYPE_TWO"}}, ProjectGridType::Unknown));
    return table;
}

const TextTable<SpecialtyType>& specialtyTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<SpecialtyType>({{SpecialtyType::Unknown, L"Unknown"},
                                                                                         {SpecialtyType::ZOK, L"ZOK"},
                                                                                         {SpecialtyType::ZIM, L"ZIM"},
                                                                                         {SpecialtyType::ZUTA, L"ZUTA"},
                                                                                         {SpecialtyType::ZEB, L"ZEB"}},
                                                                                        SpecialtyType::Unknown));
    return table;
}

const TextTable<EStandardPropertyValueType>& standardPropertyTypes()
{
    using Type = EStandardPropertyValueType;
    static const auto& table = utils::neverDestroyed(new const TextTable<Type>({{Type::String, L"String"},
                                                                                {Type::Integer, L"Integer"},
                                                                                {Type::Long, L"Long"},
                                                                                {Type::Double, L"Double"},
                                                                                {Type::DateTime, L"DateTime"},
                                                                                {Type::Boolean, L"Boolean"},
                                                                                {Type::Code, L"Code"},
                                                                                {Type::Enum, L"Enum"},
                                                                                {Type::EnumValue, L"EnumValue"}},
                                                                               Type::Unknown));
    return table;
}

const TextTable<DatasetStatus>& datasetStatusTexts()
{
    static const auto& table = utils::neverDestroyed(new const TextTable<DatasetStatus>(
        {{DatasetStatus::Draft, L"draft"}, {DatasetStatus::Committed, L"committed"}}, DatasetStatus::Draft));
    return table;
}

const TextTable<DatasetMetaKey>& datasetMetaKeys()
{
    static const auto& table = utils::neverDestroyed(
        new const TextTable<DatasetMetaKey>({{DatasetMetaKey::SpaceConfigVersion, L"SpaceConfigVersion"},
                                             {DatasetMetaKey::AxisGridVersions, L"AxisGridVersions"},
                                             {DatasetMetaKey::BuildingItemVersions, L"BuildingItemVersions"},
                                             {DatasetMetaKey::BuildingItemElevationSetVersions, L"BuildingItemElevationSetVersions"},
                                             {DatasetMetaKey::BuildingItemAxisGridVersions, L"BuildingItemAxisGridVersions"},
                                             {DatasetMetaKey::BuildingItemCoordinateVersions, L"BuildingItemCoordinateVersions"}},
                                            DatasetMetaKey::SpaceConfigVersion));
    return table;
}

std::wstring textOf(ProjectScenario scenario)
{
    switch (scenario) {
    case ProjectScenario::Archive:
        return L"ARCHIVE";
    case ProjectScenario::Owner:
        return L"OWNER";
    default:
        return L"DEFAULT";
    }
}

std::wstring textOf(SpecialtyType type)
{
    return specialtyTexts().textOf(specialtyTexts().knows(type) ? type : SpecialtyType::Unknown);
}

} // namespace orlo
