#pragma once

#include <cpprest/json.h>

#include <string>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// What a user may do in a project. True for every answer with status 200; `out` is filled only from a good envelope.
bool GetAuthorizationOfUserInProject(ErrorCode& error, web::json::value& out, const std::wstring& projectId, const std::wstring& userId);

} // namespace OrloWebService
} // namespace orlo
