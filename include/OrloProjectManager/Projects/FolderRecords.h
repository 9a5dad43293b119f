#pragma once

#include <string>

namespace orlo::http {

/// A folder, as the platform sends it.
struct ORLOHTTPPayloadFolder
{
    std::wstring id;
    std::wstring name;
    std::wstring folderType;
    std::wstring parentId; ///< empty for a root
    std::wstring projectId;
    std::wstring teamId;
};

} // namespace orlo::http
