#include "../Frame/CallFrame.h"
#include "../NetworkProject/Design/ConfigWeb.h"
#include "../Projects/Project.h"
#include "SpaceConfig.h"

#include <BaseCommon/NativeText.h>
#include <OrloNetwork/NetworkCommon.h>

namespace orlo {

using http::SendNormalRequestWithRetry;

bool Project::GetSpaceConfig(int version, std::wstring& configText, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpaceConfig")).run(error, [&] {
        web::json::value answer;
        if (!SendNormalRequestWithRetry(&OrloWebService::GetSpaceConfig, false, error, answer, m_id, version))
            return false;
        configText = utils::fromNative(answer.serialize());
        return true;
    });
}

std::shared_ptr<ISpaceConfig> Project::GetSpaceConfig(int version, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpaceConfig")).run(error, [&]() -> std::shared_ptr<ISpaceConfig> {
        web::json::value answer;
        if (!SendNormalRequestWithRetry(&OrloWebService::GetSpaceConfig, false, error, answer, m_id, version))
            return nullptr;
        return parseSpaceConfig(answer);
    });
}

std::vector<int> Project::GetSpaceConfigVersions(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpaceConfigVersions")).run(error, [&] {
        std::vector<int> versions;
        SendNormalRequestWithRetry(&OrloWebService::GetSpaceConfigVersions, false, error, versions, m_id);
        return versions;
    });
}

} // namespace orlo
