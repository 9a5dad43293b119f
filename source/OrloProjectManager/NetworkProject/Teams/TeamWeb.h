#pragma once

#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// Empties the list first. True for every answer with status 200.
bool GetTeamsInProject(ErrorCode& error, std::vector<CollaborationTeamInfo>& out, const std::wstring& projectId);

} // namespace OrloWebService
} // namespace orlo
