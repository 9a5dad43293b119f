#pragma once

#include <OrloProjectManager/Projects/FolderRecords.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

bool GetAllFoldersByProject(ErrorCode& error, std::vector<http::ORLOHTTPPayloadFolder>& out, const std::wstring& projectId);
bool GetRootFolderOfProject(ErrorCode& error, http::ORLOHTTPPayloadFolder& out, const std::wstring& projectId);
bool GetSubFoldersOfParentFolder(ErrorCode& error, std::vector<http::ORLOHTTPPayloadFolder>& out, const std::wstring& folderId,
                                 bool recursive);

} // namespace OrloWebService
} // namespace orlo
