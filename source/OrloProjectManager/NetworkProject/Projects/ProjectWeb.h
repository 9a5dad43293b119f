#pragma once

#include <OrloProjectManager/Projects/ProjectRecords.h>

#include <string>
#include <utility>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

bool GetAllProjects(ErrorCode& error, std::vector<http::ORLOHTTPPayloadProject>& out, const std::wstring& scenario);
bool GetProjectsByStatus(ErrorCode& error, std::vector<http::ORLOHTTPPayloadProject>& out, const std::wstring& status);
bool GetSampleProjects(ErrorCode& error, std::vector<http::ORLOHTTPPayloadProject>& out);
bool CreateProjectV2(ErrorCode& error, http::ORLOHTTPPayloadProject& out, const http::ORLOHTTPPayloadProject& project);
bool GetProject(ErrorCode& error, http::ORLOHTTPPayloadProject& out, const std::wstring& id);
bool DeleteProject(ErrorCode& error, const std::wstring& id);
/// limits: of projects, then of space; -1 each where the platform names no integer.
bool GetResourceLimit(ErrorCode& error, std::pair<int, int>& limits);
std::wstring getProjectIdByDataset(ErrorCode& error, const std::string& datasetId);
std::wstring getProjectIdByModelingId(ErrorCode& error, const std::string& modelingId);

} // namespace OrloWebService
} // namespace orlo
