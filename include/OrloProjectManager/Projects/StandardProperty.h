#pragma once

#include <string>

namespace orlo {

enum class EStandardPropertyValueType : int {
    Unknown = -1,
    String = 0,
    Integer = 1,
    Long = 2,
    Double = 3,
    DateTime = 4,
    Boolean = 5,
    Code = 6,
    Enum = 7,
    EnumValue = 8
};

/// One standard property of a project. The value stays text; `valueType` says how to take it.
struct ProjectStandardProperty
{
    std::string propertyId;
    EStandardPropertyValueType valueType = EStandardPropertyValueType::Unknown;
    std::wstring value;
};

} // namespace orlo
