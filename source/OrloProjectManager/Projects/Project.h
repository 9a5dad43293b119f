#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Projects/ICollaborationFolder.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>

namespace orlo {

using StandardProperties = std::vector<ProjectStandardProperty>;

class Project final : public ICollaborationProject
{
public:
    /// Sends nothing.
    Project(std::wstring id, std::wstring name, std::wstring creationTime, std::wstring description, ProjectStatus status,
            ProjectGridType gridType, std::int64_t size);

    /// The project that a record tells of.
    void setStandardProperties(std::shared_ptr<const StandardProperties> properties);

    std::wstring GetId() const override;
    std::wstring GetName() const override;
    std::int64_t GetSize() const override;
    Folders GetFolders(ErrorCode& error) override;
    Folders GetFolders() override { return GetFolders(DroppedError()); }
    std::vector<ICollaborationFolder*> GetFolders(ErrorCode& error) const override;
    std::vector<ICollaborationFolder*> GetFolders() const override { return GetFolders(DroppedError()); }
    bool GetProjectFolders(Folders& out, ErrorCode& error) override;
    ProjectStatus GetStatus() const override;
    ICollaborationFolder* GetTeamFolder(const std::wstring& teamId, int folderType) override;
    ProjectGridType GetGridType() const override;
    bool GetAxisGridConfig(int version, std::string& configText, ErrorCode& error) override;
    IAxisGrid* GetAxisGridConfig(int version, ErrorCode& error) override;
    IAxisGrid* GetAxisGridConfig(int version) override { return GetAxisGridConfig(version, DroppedError()); }
    bool UpdateAxisGrid(IAxisGrid* grid, ErrorCode& error) override;
    bool UpdateAxisGrid(IAxisGrid* grid) override { return UpdateAxisGrid(grid, DroppedError()); }
    bool GetSpaceConfig(int version, std::wstring& configText, ErrorCode& error) override;
    std::shared_ptr<ISpaceConfig> GetSpaceConfig(int version, ErrorCode& error) override;
    std::shared_ptr<ISpaceConfig> GetSpaceConfig(int version) override { return GetSpaceConfig(version, DroppedError()); }
    std::vector<int> GetSpaceConfigVersions(ErrorCode& error) override;
    std::vector<int> GetSpaceConfigVersions() override { return GetSpaceConfigVersions(DroppedError()); }
    std::vector<int> GetAxisGridConfigVersions(ErrorCode& error) override;
    std::vector<int> GetAxisGridConfigVersions() override { return GetAxisGridConfigVersions(DroppedError()); }
    bool GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>& out, ErrorCode& error) override;
    bool GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>& out) override
    {
        return GetArchivePackageList(out, DroppedError());
    }
    bool GetPermissionTypes(std::map<std::wstring, PermissionType>& out, ErrorCode& error) override;
    bool GetPermissionTypes(std::map<std::wstring, PermissionType>& out) override { return GetPermissionTypes(out, DroppedError()); }
    bool GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>& out, ErrorCode& error) override;
    bool GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>& out) override { return GetProjectFonts(out, DroppedError()); }
    bool GetProjectStandardProperties(std::vector<ProjectStandardProperty>& out, ErrorCode& error) override;
    bool GetProjectStandardProperties(std::vector<ProjectStandardProperty>& out) override
    {
        return GetProjectStandardProperties(out, DroppedError());
    }
    bool GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>& out, ErrorCode& error) override;
    bool GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>& out) override { return GetSpecialtyTypes(out, DroppedError()); }
    std::wstring CreateSpecialty(SpecialtyType type, const std::wstring& name, ErrorCode& error) override;
    bool GetTeams(std::vector<CollaborationTeamInfo>& out, ErrorCode& error) override;
    bool GetDatasetBySatatus(DatasetStatus status, std::vector<DatasetInfo>& out, ErrorCode& error) override;
    DatasetInfo CreateDataset(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                              const std::wstring& ownerId, ErrorCode& error) override;
    DatasetInfo CreateDataset(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                              const std::wstring& ownerId) override
    {
        return CreateDataset(name, teamId, specialtyId, ownerId, DroppedError());
    }
    DatasetInfo CreateDatasetById(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                  const std::wstring& ownerId, const std::string& datasetId, ErrorCode& error) override;
    DatasetInfo CreateDatasetById(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                  const std::wstring& ownerId, const std::string& datasetId) override
    {
        return CreateDatasetById(name, teamId, specialtyId, ownerId, datasetId, DroppedError());
    }
    bool GetLatestBuildingItems(std::vector<ProjectItemConfig>& items, int& revision, ErrorCode& error) override;
    bool GetLatestBuildingItems(std::vector<ProjectItemConfig>& items, int& revision) override
    {
        return GetLatestBuildingItems(items, revision, DroppedError());
    }
    bool GetBuildingItems(std::vector<ProjectItemConfig>& items, int revision, ErrorCode& error) override;
    bool GetBuildingItems(std::vector<ProjectItemConfig>& items, int revision) override
    {
        return GetBuildingItems(items, revision, DroppedError());
    }
    bool AddBuildingItem(std::wstring& subItemId, int revision, const std::wstring& content, ErrorCode& error) override;
    bool AddBuildingItem(http::HttpMessage& message, std::wstring& subItemId, int revision, const std::wstring& content) override;
    bool UpdateBuildingItem(int revision, const std::wstring& subItemId, const std::wstring& content, ErrorCode& error) override;
    bool UpdateBuildingItem(http::HttpMessage& message, int revision, const std::wstring& subItemId, const std::wstring& content) override;
    bool DeleteBuildingItem(int revision, const std::wstring& subItemId, ErrorCode& error) override;
    bool DeleteBuildingItem(http::HttpMessage& message, int revision, const std::wstring& subItemId) override;
    bool AssociateDatasetAndBuildingItem(const std::wstring& datasetId, const std::wstring& subItemId, ErrorCode& error) override;
    bool AssociateDatasetAndBuildingItem(const std::wstring& datasetId, const std::wstring& subItemId) override
    {
        return AssociateDatasetAndBuildingItem(datasetId, subItemId, DroppedError());
    }
    bool GetBuildingItemIdsByDatasetId(std::vector<std::wstring>& ids, const std::wstring& datasetId, ErrorCode& error) override;
    bool GetBuildingItemIdsByDatasetId(std::vector<std::wstring>& ids, const std::wstring& datasetId) override
    {
        return GetBuildingItemIdsByDatasetId(ids, datasetId, DroppedError());
    }
    bool GetDatasetIdsByBuildingItemId(std::vector<std::wstring>& ids, const std::wstring& subItemId, ErrorCode& error) override;
    bool GetDatasetIdsByBuildingItemId(std::vector<std::wstring>& ids, const std::wstring& subItemId) override
    {
        return GetDatasetIdsByBuildingItemId(ids, subItemId, DroppedError());
    }
    bool GetLatestProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, ErrorCode& error) override;
    bool GetLatestProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type) override
    {
        return GetLatestProjectItemConfig(config, subItemId, type, DroppedError());
    }
    bool GetProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, int version,
                              ErrorCode& error) override;
    bool GetProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, int version) override
    {
        return GetProjectItemConfig(config, subItemId, type, version, DroppedError());
    }
    bool CreateProjectItemConfig(const std::wstring& subItemId, ConfigType type, const std::wstring& content, ErrorCode& error) override;
    bool CreateProjectItemConfig(http::HttpMessage& message, const std::wstring& subItemId, ConfigType type,
                                 const std::wstring& content) override;
    bool UpdateProjectItemConfig(const std::wstring& subItemId, ConfigType type, int version, const std::wstring& content,
                                 ErrorCode& error) override;
    bool UpdateProjectItemConfig(http::HttpMessage& message, const std::wstring& subItemId, ConfigType type, int version,
                                 const std::wstring& content) override;
    bool AddComponentsWithIds(const std::map<std::wstring, std::wstring>& ids, ErrorCode& error) override;
    bool AddComponentsWithIds(const std::map<std::wstring, std::wstring>& ids) override
    {
        return AddComponentsWithIds(ids, DroppedError());
    }

private:
    /// The version that -1 asks for: the last in the platform's list, where there is a grid to compare with.
    int wantedAxisGrid(const std::shared_ptr<IAxisGrid>& remembered, int version);

    std::wstring m_id;
    std::wstring m_name;
    std::wstring m_creationTime;
    std::wstring m_description;
    ProjectStatus m_status;
    ProjectGridType m_gridType;
    /// Null until they were read.
    std::shared_ptr<const StandardProperties> m_standardProperties;
    std::int64_t m_size;
    /// As it was fetched last; null before, and where that failed.
    std::shared_ptr<IAxisGrid> m_axisGrid;
    Folders m_folders;
    Folders m_projectFolders;
};

/// A record's owner and standard properties are not handed over.
std::shared_ptr<Project> toProject(http::ORLOHTTPPayloadProject&& record);

StandardProperties toStandardProperties(const std::vector<http::ORLOProjectStandardProperty>& records);

} // namespace orlo
