#pragma once

#include "../NetworkProject/Call/Refusal.h"

#include <BaseCommon/ErrorCode.h>

namespace orlo {

/// The result of an operation that this version of the library declares and does not offer yet.
template <class Result>
Result unavailable(ErrorCode& error)
{
    refuse(error, error::badInput, L"this version of the library does not offer the operation yet");
    return Result();
}

} // namespace orlo
