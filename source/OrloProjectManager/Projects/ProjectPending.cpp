// Operations that this version declares and does not offer yet. Each fails, and says so.

#include "../Frame/Unavailable.h"
#include "Project.h"

namespace orlo {

bool Project::GetAxisGridConfig(int, std::string&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

IAxisGrid* Project::GetAxisGridConfig(int, ErrorCode& error)
{
    return unavailable<IAxisGrid*>(error);
}

bool Project::UpdateAxisGrid(IAxisGrid*, ErrorCode& error)
{
    return unavailable<bool>(error);
}

std::vector<int> Project::GetAxisGridConfigVersions(ErrorCode& error)
{
    return unavailable<std::vector<int>>(error);
}

bool Project::GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

bool Project::AddComponentsWithIds(const std::map<std::wstring, std::wstring>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

} // namespace orlo
