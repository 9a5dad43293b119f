#pragma once

#include <BaseCommon/Export.h>

#include <string>

namespace orlo::uuid {

/// A new version-4 UUID: 36 characters, lower case, no braces. Empty if the system has no random numbers to give.
ORLO_BASE_API std::string newUUIDV4();

/// Whether the text is 8-4-4-4-12 hexadecimal digits, of either case and any UUID version. Braces and blanks are refused.
ORLO_BASE_API bool IsValidGUID(const std::string& text);

} // namespace orlo::uuid
