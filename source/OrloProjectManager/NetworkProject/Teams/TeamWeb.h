#pragma once

#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>

#include <optional>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// Returns: the new team's id; empty where the answer has none, and on failure.
std::wstring CreateTeam(ErrorCode& error, const std::wstring& name, const std::wstring& projectId);
/// Empties the list first. True for every answer with status 200.
bool GetTeamsInProject(ErrorCode& error, std::vector<CollaborationTeamInfo>& out, const std::wstring& projectId);
bool AddUserToTeam(ErrorCode& error, const std::wstring& teamId, const std::wstring& userId);
bool DeleteUserFromTeam(ErrorCode& error, const std::wstring& teamId, const std::wstring& userId);
/// True for every answer with status 200; where no team is linked to the folder, the id is as it was.
bool getTeamIdByFolderId(ErrorCode& error, std::wstring& id, const std::wstring& folderId);
/// The ids of the teams of a project to which a user belongs. True for every answer with status 200.
bool GetTeamsOfUser(ErrorCode& error, std::vector<std::wstring>& ids, const std::wstring& userId, const std::wstring& projectId);

bool GetTeamInfo(ErrorCode& error, CollaborationTeamInfo& out, const std::wstring& teamId);
/// status: none for the datasets of every status.
bool GetDatasetsOfTeam(ErrorCode& error, std::vector<DatasetInfo>& out, const std::wstring& teamId,
                       const std::optional<std::wstring>& status);
/// Empties the list once the answer is a success; false where that holds no list.
bool SearchOwnDatasets(ErrorCode& error, std::vector<DatasetInfo>& out, const std::vector<std::wstring>& teamIds,
                       const std::wstring& status);
bool GetDatasetsSharedWithTeam(ErrorCode& error, std::vector<TeamSharedDatasetInfo>& out, const std::wstring& teamId);
/// Throws where a success holds no list.
bool GetFoldersSharedWithTeam(ErrorCode& error, std::vector<TeamSharedFolderInfo>& out, const std::wstring& teamId);

} // namespace OrloWebService
} // namespace orlo
