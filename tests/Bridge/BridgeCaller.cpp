// A host which never unloads the library: it leaves main while its threads are calling by the bridge.
//
//   BridgeCaller ROOT URL MICROSECONDS

#include <BaseCommon/IOrloBridge.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <chrono>
#include <cstdlib>
#include <thread>

/// What a program leaves behind when it ends in the middle of its work is no leak.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options()
{
    return "report_thread_leaks=0";
}

namespace {

/// Has the bridge in its hand before the process ends, as a sibling's thread may.
void callForEver(orlo::IOrloBridge& bridge)
{
    for (;;) {
        orlo::ErrorCode error;
        std::string grid;
        bridge.GetDatasetMeta(error, orlo::DatasetMetaKey::AxisGridVersions, L"version-1");
        bridge.GetAxisGridConfig(L"modeling-1", -1, grid, error);
        bridge.GetFamilyFileUrl(error, L"p", L"f", L"1");
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4 || !orlo::IOrloBridge::m_pBridge)
        return 2;
    orlo::ICollaborationProjectManager::Get(); // a host which uses the library
    orlo::utils::setLocalRoot(orlo::utils::toWstring(argv[1]));
    orlo::OrloConfig config;
    for (const wchar_t* service : {L"project", L"structure"})
        config.serviceUrls[service] = orlo::utils::toWstring(argv[2]);
    orlo::OrloConfigManager::Configure(config);
    orlo::UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    orlo::http::setRetryPolicy({1, 0});
    for (int i = 0; i < 4; ++i)
        std::thread(callForEver, std::ref(*orlo::IOrloBridge::m_pBridge)).detach();
    std::this_thread::sleep_for(std::chrono::microseconds(std::atoi(argv[3])));
}
