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
/// Errors: 0xE8000002 transport or exception; a negative value for an error status.   Threads: any; blocks the caller. Not retried but
/// where told.
class ORLO_PROJECT_API ICollaborationTeam
{
public:
    ICollaborationTeam();
    virtual ~ICollaborationTeam();

    ICollaborationTeam(const ICollaborationTeam&) = delete;
    ICollaborationTeam& operator=(const ICollaborationTeam&) = delete;

    /// As GetUserOwnsDatasetsInTeam, for several teams at once; false for none.   Requests: one.
    static bool GetUserOwnsDatasetsInTeams(const std::vector<std::wstring>& teamIds, const DatasetStatus& status,
                                           std::vector<DatasetInfo>& out, ErrorCode& error);
    static bool GetUserOwnsDatasetsInTeams(const std::vector<std::wstring>& teamIds, const DatasetStatus& status,
                                           std::vector<DatasetInfo>& out);

    /// What the team has received from others.   Requests: one, retried.
    virtual std::vector<std::shared_ptr<ICollaborationSharedRecord>> GetCollaborationSharedRecords(ErrorCode& error) = 0;
    virtual std::vector<std::shared_ptr<ICollaborationSharedRecord>> GetCollaborationSharedRecords() = 0;
    /// Errors: also 0xE8000002 where the platform answers no list.   Requests: one.
    virtual std::vector<TeamSharedFolderInfo> GetTeamSharedFolders(ErrorCode& error) = 0;
    virtual std::vector<TeamSharedFolderInfo> GetTeamSharedFolders() = 0;
    /// Requests: one.
    virtual std::vector<TeamSharedDatasetInfo> GetTeamSharedDatasets(ErrorCode& error) = 0;
    virtual std::vector<TeamSharedDatasetInfo> GetTeamSharedDatasets() = 0;
    /// `Any` lists the datasets of every status.   Requests: one.
    virtual std::vector<DatasetInfo> GetTeamDatasetInfos(DatasetStatus status, ErrorCode& error) = 0;
    virtual std::vector<DatasetInfo> GetTeamDatasetInfos(DatasetStatus status) = 0;
    /// The signed-in user's own datasets in the team, in place of what the list held; `Any` lists the drafts here. False, with the list as
    /// it was, for a team without an id and on failure; with an empty one for a success that holds no list.   Requests: one.
    virtual bool GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out, ErrorCode& error) = 0;
    virtual bool GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out) = 0;
    /// Requests: one.
    virtual CollaborationTeamInfo GetTeamInfo(ErrorCode& error) = 0;
    virtual CollaborationTeamInfo GetTeamInfo() = 0;
    /// The id that the team was made with; may be empty. Sends nothing.
    virtual std::wstring GetTeamId() const = 0;
    /// Errors: also 0xE8000001 for an empty id of the user or the team.   Requests: one, retried.
    virtual bool AddMember(const std::wstring& userId, ErrorCode& error) = 0;
    virtual bool AddMember(const std::wstring& userId) = 0;
};

} // namespace orlo
