#include "HostSetup.h"

#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>

namespace orlo::test {

HostSetup::HostSetup(const std::string& url) : m_localRoot(m_folder)
{
    for (const wchar_t* key : {L"project", L"structure", L"module", L"message", L"authorization", L"slproxy"})
        m_config.serviceUrls[key] = utils::toWstring(url);
    OrloConfigManager::Configure(m_config);
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
}

HostSetup::~HostSetup()
{
    UserSession::SignOut();
    OrloConfigManager::Configure({});
}

void HostSetup::change(const std::function<void(OrloConfig&)>& change) const
{
    OrloConfig config = m_config;
    change(config);
    OrloConfigManager::Configure(config);
}

} // namespace orlo::test
