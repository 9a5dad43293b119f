#pragma once

#include <BaseCommon/Export.h>

#include <string>

namespace orlo::utils {

/// What an exception says, and the number that an HttpError has for it.
struct Caught
{
    std::wstring text = L"unknown exception"; ///< without line breaks at its end
    int code = unknown;

    bool isUnknown() const { return code == unknown; }

    static constexpr int known = 5555;
    static constexpr int unknown = 5556; ///< of what is no std::exception
};

/// Reads the exception that is being handled.
ORLO_BASE_API Caught caught();

} // namespace orlo::utils
