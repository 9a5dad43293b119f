#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class ICollaborationSharedRecord;

/// A folder that another team shares with a team.
struct TeamSharedFolderInfo
{
    std::wstring teamId;
    std::wstring teamName;
    std::wstring resourceId;
};

/// The datasets that another team shares with a team.
struct TeamSharedDatasetInfo
{
    std::wstring teamId;
    std::wstring teamName;
    std::vector<std::wstring> datasetIds;
};

/// One team, known by its id alone: every operation but GetTeamId asks the platform.
/// The form without an ErrorCode does the same and drops the reason of a failure.
class ORLO_PROJECT_API ICollaborationTeam
{
public:
    ICollaborationTeam();
    virtual ~ICollaborationTeam();

    ICollaborationTeam(const ICollaborationTeam&) = delete;
    ICollaborationTeam& operator=(const ICollaborationTeam&) = delete;

    virtual std::vector<std::shared_ptr<ICollaborationSharedRecord>> GetCollaborationSharedRecords(ErrorCode& error) = 0;
    virtual std::vector<std::shared_ptr<ICollaborationSharedRecord>> GetCollaborationSharedRecords() = 0;
    virtual std::vector<TeamSharedFolderInfo> GetTeamSharedFolders(ErrorCode& error) = 0;
    virtual std::vector<TeamSharedFolderInfo> GetTeamSharedFolders() = 0;
    virtual std::vector<TeamSharedDatasetInfo> GetTeamSharedDatasets(ErrorCode& error) = 0;
    virtual std::vector<TeamSharedDatasetInfo> GetTeamSharedDatasets() = 0;
    virtual std::vector<DatasetInfo> GetTeamDatasetInfos(DatasetStatus status, ErrorCode& error) = 0;
    virtual std::vector<DatasetInfo> GetTeamDatasetInfos(DatasetStatus status) = 0;
    virtual bool GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out, ErrorCode& error) = 0;
    virtual bool GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out) = 0;
    virtual CollaborationTeamInfo GetTeamInfo(ErrorCode& error) = 0;
    virtual CollaborationTeamInfo GetTeamInfo() = 0;
    /// The id that the team was made with; may be empty. Sends nothing.
    virtual std::wstring GetTeamId() const = 0;
    virtual bool AddMember(const std::wstring& userId, ErrorCode& error) = 0;
    virtual bool AddMember(const std::wstring& userId) = 0;
};

} // namespace orlo
