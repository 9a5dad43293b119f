#pragma once

#include "../Frame/DroppedError.h"

#include <OrloProjectManager/Teams/ICollaborationTeam.h>

namespace orlo {

class CollaborationTeam final : public ICollaborationTeam
{
public:
    /// Sends nothing. The id may be empty.
    explicit CollaborationTeam(std::wstring id);

    std::vector<std::shared_ptr<ICollaborationSharedRecord>> GetCollaborationSharedRecords(ErrorCode& error) override;
    std::vector<std::shared_ptr<ICollaborationSharedRecord>> GetCollaborationSharedRecords() override
    {
        return GetCollaborationSharedRecords(DroppedError());
    }
    std::vector<TeamSharedFolderInfo> GetTeamSharedFolders(ErrorCode& error) override;
    std::vector<TeamSharedFolderInfo> GetTeamSharedFolders() override { return GetTeamSharedFolders(DroppedError()); }
    std::vector<TeamSharedDatasetInfo> GetTeamSharedDatasets(ErrorCode& error) override;
    std::vector<TeamSharedDatasetInfo> GetTeamSharedDatasets() override { return GetTeamSharedDatasets(DroppedError()); }
    std::vector<DatasetInfo> GetTeamDatasetInfos(DatasetStatus status, ErrorCode& error) override;
    std::vector<DatasetInfo> GetTeamDatasetInfos(DatasetStatus status) override { return GetTeamDatasetInfos(status, DroppedError()); }
    bool GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out, ErrorCode& error) override;
    bool GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out) override
    {
        return GetUserOwnsDatasetsInTeam(status, out, DroppedError());
    }
    CollaborationTeamInfo GetTeamInfo(ErrorCode& error) override;
    CollaborationTeamInfo GetTeamInfo() override { return GetTeamInfo(DroppedError()); }
    std::wstring GetTeamId() const override;
    bool AddMember(const std::wstring& userId, ErrorCode& error) override;
    bool AddMember(const std::wstring& userId) override { return AddMember(userId, DroppedError()); }

private:
    const std::wstring teamId;
};

} // namespace orlo
