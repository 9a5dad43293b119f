#pragma once

#include "../Frame/DroppedError.h"

#include <BaseCommon/Text.h>
#include <OrloProjectManager/Teams/ICollaborationTeamManager.h>

namespace orlo {

class CollaborationTeamManager final : public ICollaborationTeamManager
{
public:
    Team CreateTeam(const std::wstring& name, const std::wstring& projectId, ErrorCode& error) override;
    Team CreateTeam(const std::wstring& name, const std::wstring& projectId) override
    {
        return CreateTeam(name, projectId, DroppedError());
    }
    Team GetTeamByFolder(const std::wstring& folderId, ErrorCode& error) override;
    Team GetTeamByFolder(const std::wstring& folderId) override { return GetTeamByFolder(folderId, DroppedError()); }
    Team GetTeam(const std::wstring& teamId) override;
    Team GetTeamByDataset(const std::string& datasetId, ErrorCode& error) override;
    Team GetTeamByDataset(const std::wstring& datasetId) override { return GetTeamByDataset(utils::toString(datasetId), DroppedError()); }
    std::vector<Team> GetMyTeamsByProject(const std::wstring& projectId, ErrorCode& error) override;
    std::vector<Team> GetMyTeamsByProject(const std::wstring& projectId) override { return GetMyTeamsByProject(projectId, DroppedError()); }
};

} // namespace orlo
