#pragma once

#include <OrloProjectManager/Projects/FolderRecords.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

bool GetAllFoldersByProject(ErrorCode& error, std::vector<http::ORLOHTTPPayloadFolder>& out, const std::wstring& projectId);
bool GetRootFolderOfProject(ErrorCode& error, http::ORLOHTTPPayloadFolder& out, const std::wstring& projectId);
bool GetSubFoldersOfParentFolder(ErrorCode& error, std::vector<http::ORLOHTTPPayloadFolder>& out, const std::wstring& folderId,
                                 bool recursive);
/// Empties the list first. True for every answer with status 200.
bool GetTeamsInProject(ErrorCode& error, std::vector<CollaborationTeamInfo>& out, const std::wstring& projectId);

} // namespace OrloWebService
} // namespace orlo
