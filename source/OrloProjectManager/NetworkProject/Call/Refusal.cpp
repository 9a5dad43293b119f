#include "Refusal.h"

#include <BaseCommon/ErrorCode.h>

namespace orlo {

bool refuse(ErrorCode& error, long long value, const std::wstring& message)
{
    error.Assign(value, makeGenericError(message));
    return false;
}

} // namespace orlo
