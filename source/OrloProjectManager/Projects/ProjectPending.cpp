// Operations that this version declares and does not offer yet. Each fails, and says so.

#include "../Frame/Unavailable.h"
#include "Project.h"

namespace orlo {

bool Project::GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetLatestBuildingItems(std::vector<ProjectItemConfig>&, int&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetBuildingItems(std::vector<ProjectItemConfig>&, int, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AddBuildingItem(std::wstring&, int, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AddBuildingItem(http::HttpMessage&, std::wstring&, int, const std::wstring&)
{
    return unavailable<bool>(DroppedError());
}

bool Project::UpdateBuildingItem(int, const std::wstring&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::UpdateBuildingItem(http::HttpMessage&, int, const std::wstring&, const std::wstring&)
{
    return unavailable<bool>(DroppedError());
}

bool Project::DeleteBuildingItem(int, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::DeleteBuildingItem(http::HttpMessage&, int, const std::wstring&)
{
    return unavailable<bool>(DroppedError());
}

bool Project::AssociateDatasetAndBuildingItem(const std::wstring&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetBuildingItemIdsByDatasetId(std::vector<std::wstring>&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetDatasetIdsByBuildingItemId(std::vector<std::wstring>&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetLatestProjectItemConfig(ProjectItemConfig&, const std::wstring&, ConfigType, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetProjectItemConfig(ProjectItemConfig&, const std::wstring&, ConfigType, int, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::CreateProjectItemConfig(const std::wstring&, ConfigType, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::CreateProjectItemConfig(http::HttpMessage&, const std::wstring&, ConfigType, const std::wstring&)
{
    return unavailable<bool>(DroppedError());
}

bool Project::UpdateProjectItemConfig(const std::wstring&, ConfigType, int, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::UpdateProjectItemConfig(http::HttpMessage&, const std::wstring&, ConfigType, int, const std::wstring&)
{
    return unavailable<bool>(DroppedError());
}

bool Project::AddComponentsWithIds(const std::map<std::wstring, std::wstring>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

} // namespace orlo
