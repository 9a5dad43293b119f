#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class ICollaborationTeam;

/// Teams: groups of users inside a project who share a folder and datasets. A team is handed out by its id alone, which isn't
/// looked up: where the platform has none, or a request failed, it is the empty one. Null only after an exception.
/// The form without an ErrorCode does the same and drops the reason of a failure.
/// Errors: 0xE8000002 transport or exception; a negative value for an error status.   Threads: any; blocks the caller.
class ORLO_PROJECT_API ICollaborationTeamManager
{
public:
    using Team = std::shared_ptr<ICollaborationTeam>;

    ICollaborationTeamManager();
    virtual ~ICollaborationTeamManager();

    ICollaborationTeamManager(const ICollaborationTeamManager&) = delete;
    ICollaborationTeamManager& operator=(const ICollaborationTeamManager&) = delete;

    /// The one of this process; the library owns it.
    static ICollaborationTeamManager* Get();

    /// A retry after a lost answer may make a second team.
    /// Errors: also 0xE8000001 for an empty name or project id.   Requests: one, retried.
    virtual Team CreateTeam(const std::wstring& name, const std::wstring& projectId, ErrorCode& error) = 0;
    virtual Team CreateTeam(const std::wstring& name, const std::wstring& projectId) = 0;
    /// The team to which a folder is linked.   Requests: one, retried.
    virtual Team GetTeamByFolder(const std::wstring& folderId, ErrorCode& error) = 0;
    virtual Team GetTeamByFolder(const std::wstring& folderId) = 0;
    /// Any id is taken.   Requests: none.
    virtual Team GetTeam(const std::wstring& teamId) = 0;
    /// The team that owns a dataset. An exception is logged only, and leaves the ErrorCode alone.   Requests: one.
    virtual Team GetTeamByDataset(const std::string& datasetId, ErrorCode& error) = 0;
    virtual Team GetTeamByDataset(const std::wstring& datasetId) = 0;
    /// The teams of a project to which the signed-in user belongs, in the platform's order.   Requests: one, not retried.
    virtual std::vector<Team> GetMyTeamsByProject(const std::wstring& projectId, ErrorCode& error) = 0;
    virtual std::vector<Team> GetMyTeamsByProject(const std::wstring& projectId) = 0;
};

namespace HttpClient {

// The same for callers without an object. Threads: any; each blocks its caller.

/// Returns: the new team's id; empty on failure.   Requests: one, retried.
ORLO_PROJECT_API std::wstring createTeam(const std::wstring& name, const std::wstring& projectId);
/// Empties the list first; the id may be one that it holds.   Returns: true for every answer with status 200.   Requests: one, retried.
ORLO_PROJECT_API bool getTeamInfosInProject(const std::wstring& projectId, std::vector<CollaborationTeamInfo>& out);
/// Requests: one, retried.
ORLO_PROJECT_API bool addUserToTeam(const std::wstring& teamId, const std::wstring& userId);
/// Requests: one, not retried.
ORLO_PROJECT_API bool deleteUserFromTeam(const std::wstring& teamId, const std::wstring& userId);
/// Returns: the id of the team to which a folder is linked; empty where there is none, and on failure.   Requests: one, retried.
ORLO_PROJECT_API std::wstring getTeamIdByFolderId(const std::wstring& folderId, ErrorCode& error);

} // namespace HttpClient
} // namespace orlo
