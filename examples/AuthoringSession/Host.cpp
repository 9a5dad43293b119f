#include "Host.h"

#include <BaseCommon/LocalFolders.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>

namespace session {

void setHostUp(const std::wstring& platformUrl, const std::wstring& localFolder)
{
    orlo::utils::setLocalRoot(localFolder);

    orlo::OrloConfig config;
    for (const wchar_t* service : {L"project", L"structure", L"module", L"message", L"authorization", L"slproxy"})
        config.serviceUrls[service] = platformUrl;
    config.appVersion = L"1.0";
    orlo::OrloConfigManager::Configure(config);
}

void signIn()
{
    orlo::UserSession::SignIn({L"demo", L"demo-account", L"demo-token"});
}

void signInColleague()
{
    orlo::UserSession::SignIn({L"li", L"li-account", L"li-token"});
}

std::wstring who()
{
    return orlo::UserSession::GetInstance()->GetId();
}

} // namespace session
