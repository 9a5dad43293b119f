#include "Host.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>

namespace session {

namespace {

orlo::UserIdentity& user()
{
    static orlo::UserIdentity identity;
    return identity;
}

} // namespace

orlo::HostSettings demoSettings()
{
    orlo::HostSettings settings;
    settings.config.appVersion = L"1.0";
    settings.user = {L"demo", L"demo-account", L"demo-token"};
    return settings;
}

std::string addressIn(const orlo::HostSettings& settings)
{
    const auto found = settings.config.serviceUrls.find(L"project");
    return found == settings.config.serviceUrls.end() ? "" : orlo::utils::toString(found->second);
}

void setHostUp(orlo::HostSettings settings, const std::wstring& platformUrl, const std::wstring& localFolder)
{
    orlo::utils::setLocalRoot(localFolder);
    for (const wchar_t* service : {L"project", L"structure", L"module", L"message", L"authorization", L"slproxy"})
        settings.config.serviceUrls[service] = platformUrl;
    orlo::OrloConfigManager::Configure(settings.config);
    user() = settings.user;
}

void signIn()
{
    orlo::UserSession::SignIn(user());
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
