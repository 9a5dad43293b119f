#pragma once

#include <string>

namespace orlo {

class ErrorCode;

/// Refuses an input: assigns a GenericError and gives false, so that a check reads `return refuse(...)`.
bool refuse(ErrorCode& error, long long value, const std::wstring& message);

template <class... Texts>
bool isAnyEmpty(const Texts&... texts)
{
    return (texts.empty() || ...);
}

} // namespace orlo
