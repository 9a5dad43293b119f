#pragma once

#include <string>

namespace orlo {

/// A field of design work.
enum class SpecialtyType : int { Unknown = 0, ZOK = 1, ZIM = 2, ZUTA = 3, ZEB = 4 };

namespace http {

/// A specialty of a project, as the platform sends it.
struct ORLOHTTPPayloadSpecialty
{
    std::wstring id;
    std::wstring name;
    std::wstring projectId;
    std::wstring description;
    std::wstring type;
};

} // namespace http
} // namespace orlo
