// Operations that this version declares and does not offer yet. Each fails, and says so.

#include "../Frame/Unavailable.h"
#include "Project.h"

namespace orlo {

bool Project::GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AddComponentsWithIds(const std::map<std::wstring, std::wstring>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

} // namespace orlo
