#pragma once

#include <string>

namespace orlo {

class ErrorCode;

/// Refuses an input: assigns a GenericError and gives false, so that a check reads `return refuse(...)`.
bool refuse(ErrorCode& error, long long value, const std::wstring& message);

} // namespace orlo
