#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Design/ConfigWeb.h"
#include "../Projects/Project.h"
#include "SpaceConfig.h"

#include <BaseCommon/NativeText.h>

namespace orlo {

bool Project::GetSpaceConfig(int version, std::wstring& configText, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpaceConfig")).run(error, [&] {
        const auto answer = fetched(&OrloWebService::GetSpaceConfig, error, m_id, version);
        if (!answer)
            return false;
        configText = utils::fromNative(answer->serialize());
        return true;
    });
}

std::shared_ptr<ISpaceConfig> Project::GetSpaceConfig(int version, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpaceConfig")).run(error, [&]() -> std::shared_ptr<ISpaceConfig> {
        const auto answer = fetched(&OrloWebService::GetSpaceConfig, error, m_id, version);
        if (!answer)
            return nullptr;
        return parseSpaceConfig(*answer);
    });
}

std::vector<int> Project::GetSpaceConfigVersions(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpaceConfigVersions")).run(error, [&] {
        std::vector<int> versions;
        retried(&OrloWebService::GetSpaceConfigVersions, error, versions, m_id);
        return versions;
    });
}

} // namespace orlo
