#pragma once

#include <string>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// Gives a new project its first space configuration: a site, a building, a region and a floor.
bool AddDefaultSpaceConfig(ErrorCode& error, const std::wstring& projectId);

} // namespace OrloWebService
} // namespace orlo
