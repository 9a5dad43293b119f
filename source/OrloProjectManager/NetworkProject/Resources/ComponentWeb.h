#pragma once

#include <string>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// Returns: the address of a family's file; empty on failure.
std::wstring GetFamilyFileUrl(ErrorCode& error, const std::wstring& projectId, const std::wstring& familyId,
                              const std::wstring& familyVersion);

} // namespace OrloWebService
} // namespace orlo
