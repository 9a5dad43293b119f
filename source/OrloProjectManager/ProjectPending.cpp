// Operations that this version declares and does not offer yet. Each fails, and says so.

#include "CallFrame.h"
#include "Project.h"

namespace orlo {

namespace {

template <class Result>
Result unavailable(ErrorCode& error)
{
    refuse(error, error::badInput, L"this version of the library does not offer the operation yet");
    return Result();
}

template <class Result>
Result unavailable()
{
    return Result();
}

} // namespace

Project::Folders Project::GetFolders(ErrorCode& error)
{
    return unavailable<Project::Folders>(error);
}

Project::Folders Project::GetFolders()
{
    return unavailable<Project::Folders>();
}

std::vector<ICollaborationFolder*> Project::GetFolders(ErrorCode& error) const
{
    return unavailable<std::vector<ICollaborationFolder*>>(error);
}

std::vector<ICollaborationFolder*> Project::GetFolders() const
{
    return unavailable<std::vector<ICollaborationFolder*>>();
}

bool Project::GetProjectFolders(Folders&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

ICollaborationFolder* Project::GetTeamFolder(const std::wstring&, int)
{
    return unavailable<ICollaborationFolder*>();
}

bool Project::GetAxisGridConfig(int, std::string&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

IAxisGrid* Project::GetAxisGridConfig(int, ErrorCode& error)
{
    return unavailable<IAxisGrid*>(error);
}

IAxisGrid* Project::GetAxisGridConfig(int)
{
    return unavailable<IAxisGrid*>();
}

bool Project::UpdateAxisGrid(IAxisGrid*, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::UpdateAxisGrid(IAxisGrid*)
{
    return unavailable<bool>();
}

bool Project::GetSpaceConfig(int, std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

std::shared_ptr<ISpaceConfig> Project::GetSpaceConfig(int, ErrorCode& error)
{
    return unavailable<std::shared_ptr<ISpaceConfig>>(error);
}

std::shared_ptr<ISpaceConfig> Project::GetSpaceConfig(int)
{
    return unavailable<std::shared_ptr<ISpaceConfig>>();
}

std::vector<int> Project::GetSpaceConfigVersions(ErrorCode& error)
{
    return unavailable<std::vector<int>>(error);
}

std::vector<int> Project::GetSpaceConfigVersions()
{
    return unavailable<std::vector<int>>();
}

std::vector<int> Project::GetAxisGridConfigVersions(ErrorCode& error)
{
    return unavailable<std::vector<int>>(error);
}

std::vector<int> Project::GetAxisGridConfigVersions()
{
    return unavailable<std::vector<int>>();
}

bool Project::GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>&)
{
    return unavailable<bool>();
}

bool Project::GetPermissionTypes(std::map<std::wstring, PermissionType>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetPermissionTypes(std::map<std::wstring, PermissionType>&)
{
    return unavailable<bool>();
}

bool Project::GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>&)
{
    return unavailable<bool>();
}

bool Project::GetProjectStandardProperties(std::vector<ProjectStandardProperty>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetProjectStandardProperties(std::vector<ProjectStandardProperty>&)
{
    return unavailable<bool>();
}

bool Project::GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>&)
{
    return unavailable<bool>();
}

std::wstring Project::CreateSpecialty(SpecialtyType, const std::wstring&, ErrorCode& error)
{
    return unavailable<std::wstring>(error);
}

bool Project::GetTeams(std::vector<CollaborationTeamInfo>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetDatasetBySatatus(DatasetStatus, std::vector<DatasetInfo>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

DatasetInfo Project::CreateDataset(const std::wstring&, const std::wstring&, const std::wstring&, const std::wstring&, ErrorCode& error)
{
    return unavailable<DatasetInfo>(error);
}

DatasetInfo Project::CreateDataset(const std::wstring&, const std::wstring&, const std::wstring&, const std::wstring&)
{
    return unavailable<DatasetInfo>();
}

DatasetInfo Project::CreateDatasetById(const std::wstring&, const std::wstring&, const std::wstring&, const std::wstring&,
                                       const std::string&, ErrorCode& error)
{
    return unavailable<DatasetInfo>(error);
}

DatasetInfo Project::CreateDatasetById(const std::wstring&, const std::wstring&, const std::wstring&, const std::wstring&,
                                       const std::string&)
{
    return unavailable<DatasetInfo>();
}

bool Project::GetLatestBuildingItems(std::vector<ProjectItemConfig>&, int&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetLatestBuildingItems(std::vector<ProjectItemConfig>&, int&)
{
    return unavailable<bool>();
}

bool Project::GetBuildingItems(std::vector<ProjectItemConfig>&, int, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetBuildingItems(std::vector<ProjectItemConfig>&, int)
{
    return unavailable<bool>();
}

bool Project::AddBuildingItem(std::wstring&, int, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AddBuildingItem(http::HttpMessage&, std::wstring&, int, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::UpdateBuildingItem(int, const std::wstring&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::UpdateBuildingItem(http::HttpMessage&, int, const std::wstring&, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::DeleteBuildingItem(int, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::DeleteBuildingItem(http::HttpMessage&, int, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::AssociateDatasetAndBuildingItem(const std::wstring&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AssociateDatasetAndBuildingItem(const std::wstring&, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::GetBuildingItemIdsByDatasetId(std::vector<std::wstring>&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetBuildingItemIdsByDatasetId(std::vector<std::wstring>&, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::GetDatasetIdsByBuildingItemId(std::vector<std::wstring>&, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetDatasetIdsByBuildingItemId(std::vector<std::wstring>&, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::GetLatestProjectItemConfig(ProjectItemConfig&, const std::wstring&, ConfigType, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetLatestProjectItemConfig(ProjectItemConfig&, const std::wstring&, ConfigType)
{
    return unavailable<bool>();
}

bool Project::GetProjectItemConfig(ProjectItemConfig&, const std::wstring&, ConfigType, int, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::GetProjectItemConfig(ProjectItemConfig&, const std::wstring&, ConfigType, int)
{
    return unavailable<bool>();
}

bool Project::CreateProjectItemConfig(const std::wstring&, ConfigType, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::CreateProjectItemConfig(http::HttpMessage&, const std::wstring&, ConfigType, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::UpdateProjectItemConfig(const std::wstring&, ConfigType, int, const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::UpdateProjectItemConfig(http::HttpMessage&, const std::wstring&, ConfigType, int, const std::wstring&)
{
    return unavailable<bool>();
}

bool Project::AddComponentsWithIds(const std::map<std::wstring, std::wstring>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AddComponentsWithIds(const std::map<std::wstring, std::wstring>&)
{
    return unavailable<bool>();
}

} // namespace orlo
