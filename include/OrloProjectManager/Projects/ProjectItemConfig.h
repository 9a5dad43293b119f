#pragma once

#include <OrloProjectManager/Design/ConfigType.h>

#include <string>

namespace orlo {

/// One stored version of a building item or of a configuration of its own.
struct ProjectItemConfig
{
    ConfigType type = ConfigType::SubItem;
    std::wstring id;
    int version = 0;
    std::wstring birthTime;
    std::wstring creationTime;
    std::wstring configValue; ///< opaque JSON text
};

} // namespace orlo
