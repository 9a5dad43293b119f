#pragma once

#include <OrloProjectManager/Projects/Specialty.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

bool GetSpecialty(ErrorCode& error, http::ORLOHTTPPayloadSpecialty& out, const std::wstring& id);
bool GetSpecialtiesInProject(ErrorCode& error, std::vector<http::ORLOHTTPPayloadSpecialty>& out, const std::wstring& projectId);
/// The new specialty's id; empty on failure.
std::wstring CreateSpecialty(ErrorCode& error, const std::wstring& projectId, const std::wstring& type, const std::wstring& name);

} // namespace OrloWebService
} // namespace orlo
