#pragma once

#include <OrloProjectManager/Design/ConfigType.h>

#include <cpprest/json.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// Gives a new project its first space configuration: a site, a building, a region and a floor.
bool AddDefaultSpaceConfig(ErrorCode& error, const std::wstring& projectId);
bool UpdateSpaceConfig(ErrorCode& error, const std::wstring& configText, const std::wstring& projectId);
bool UpdateProjectConfig(ErrorCode& error, const std::wstring& configContent, const std::wstring& projectId, ConfigType type);
/// One version of the space configuration, as the platform answers it. The version goes out as it stands.
bool GetSpaceConfig(ErrorCode& error, web::json::value& out, const std::wstring& projectId, int version);
bool GetSpaceConfigVersions(ErrorCode& error, std::vector<int>& out, const std::wstring& projectId);
/// The same two for the axis grid; its versions are the platform's answer as text, in UTF-8.
bool GetAxisGridConfig(ErrorCode& error, std::string& out, const std::wstring& projectId, int version);
bool GetAxisGridConfigVersions(ErrorCode& error, std::vector<int>& out, const std::wstring& projectId);

} // namespace OrloWebService
} // namespace orlo
