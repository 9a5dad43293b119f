#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <map>
#include <mutex>

namespace orlo {

class ProjectManager final : public ICollaborationProjectManager
{
public:
    std::shared_ptr<ICollaborationProject> CreateProject(const std::wstring& name, ProjectStatus status, ErrorCode& error) override;
    std::shared_ptr<ICollaborationProject> CreateProject(const std::wstring& name, ProjectStatus status,
                                                         const std::wstring& templateId) override;
    std::shared_ptr<ICollaborationProject> CreateProjectById(const std::wstring& name, ProjectStatus status, const std::wstring& projectId,
                                                             ErrorCode& error) override;
    std::shared_ptr<ICollaborationProject> CreateProjectById(const std::wstring& name, ProjectStatus status, const std::wstring& projectId,
                                                             const std::wstring& templateId) override;
    Projects GetAllProjects(ErrorCode& error) override;
    Projects GetAllProjects() override { return GetAllProjects(DroppedError()); }
    Projects GetOwnerProjects(ErrorCode& error) override;
    Projects GetOwnerProjects() override { return GetOwnerProjects(DroppedError()); }
    Projects GetArchivedProjects(ErrorCode& error) override;
    Projects GetArchivedProjects() override { return GetArchivedProjects(DroppedError()); }
    bool GetProjectByStatus(ProjectStatus status, Projects& out, ErrorCode& error) override;
    bool GetProjectByStatus(ProjectStatus status, Projects& out) override { return GetProjectByStatus(status, out, DroppedError()); }
    bool GetSampleProjects(Projects& out, ErrorCode& error) override;
    bool GetSampleProjects(Projects& out) override { return GetSampleProjects(out, DroppedError()); }
    std::vector<std::shared_ptr<DatasetInfo>> GetDatasetInfosInFolder(const std::wstring& folderId, ErrorCode& error) override;
    std::vector<std::shared_ptr<DatasetInfo>> GetDatasetInfosInFolder(const std::wstring& folderId) override
    {
        return GetDatasetInfosInFolder(folderId, DroppedError());
    }
    std::shared_ptr<ICollaborationProject> GetProjectByDatasetId(const std::string& datasetId, ErrorCode& error) override;
    std::shared_ptr<ICollaborationProject> GetProjectByDatasetId(const std::string& datasetId) override
    {
        return GetProjectByDatasetId(datasetId, DroppedError());
    }
    SpecialtyType GetSpecialtyTypeById(const std::wstring& specialtyId, ErrorCode& error) override;
    SpecialtyType GetSpecialtyTypeById(const std::wstring& specialtyId) override
    {
        return GetSpecialtyTypeById(specialtyId, DroppedError());
    }
    DatasetInfo GetDatasetInfo(const std::string& datasetId, ErrorCode& error) override;
    DatasetInfo GetDatasetInfo(const std::string& datasetId) override { return GetDatasetInfo(datasetId, DroppedError()); }
    DatasetInfo GetDatasetInfoByModelingId(const std::string& modelingId, ErrorCode& error) override;
    bool GetResourceStatus(ResourceStatus& out, ErrorCode& error) override;
    bool GetResourceStatus(ResourceStatus& out) override { return GetResourceStatus(out, DroppedError()); }
    std::shared_ptr<ICollaborationProject> GetProjectByModelingId(const std::string& modelingId, ErrorCode& error) override;

private:
    Projects listProjects(ProjectScenario scenario, ErrorCode& error);
    SpecialtyType GetSpecialtyType(const std::wstring& specialtyId, ErrorCode& error);

    std::mutex m_cacheMutex;
    std::map<std::wstring, SpecialtyType> specialtyTypes;
    /// Holds the last project found, and no other.
    std::map<std::string, std::shared_ptr<ICollaborationProject>> projectsByModelingId;
};

} // namespace orlo
