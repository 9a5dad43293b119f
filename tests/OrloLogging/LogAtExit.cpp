#include <BaseCommon/BaseConfigManager.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloLogging/ILogManager.h>
#include <OrloLogging/TimeCostingHelper.h>

namespace {

// A static made before anything of the libraries is used outlives what they would make as ordinary statics.
struct LogsLast
{
    ~LogsLast()
    {
        orlo::TimeCostingHelper::instance()->end("run");
        const auto* config = orlo::OrloConfigManager::Get();
        const auto user = orlo::UserSession::GetInstance();
        orlo::ILogManager::Get()->LogWarning(L"last words of " + (user ? user->GetId() : L"nobody") + L" to " +
                                             config->GetServiceUrl(L"project") + L" below " +
                                             orlo::utils::toWstring(orlo::BaseConfigManager::Get()->GetDefaultRemoteFolder()));
    }
} logsLast;

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    orlo::utils::setLocalRoot(orlo::utils::toWstring(std::string(argv[1])));
    orlo::OrloConfig config;
    config.serviceUrls[L"project"] = L"http://127.0.0.1/p";
    config.defaultRemoteFolder = L"remote";
    orlo::OrloConfigManager::Configure(config);
    orlo::UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    orlo::TimeCostingHelper::instance()->begin("run");
    orlo::ILogManager::Get()->LogInfo(L"first words");
    return 0;
}
