#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Resources/ComponentWeb.h"
#include "../Projects/Project.h"

namespace orlo {

bool Project::AddComponentsWithIds(const std::map<std::wstring, std::wstring>& ids, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::AddComponentsWithIds")).run(error, [&] {
        const bool done = retried(&OrloWebService::AddComponentsWithIds, error, m_id, ids);
        if (!done)
            log::error(L"Project::AddLocalComponents error!");
        return done;
    });
}

} // namespace orlo
