// The part of a host that knows the library, to be loaded and unloaded.

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#define BRIDGE_ENTRY extern "C" __attribute__((visibility("default")))

/// Sets the libraries up, with their files below `root` and the platform at `url`.
BRIDGE_ENTRY void setUp(const char* root, const char* url)
{
    orlo::utils::setLocalRoot(orlo::utils::toWstring(root));
    orlo::OrloConfig config;
    for (const wchar_t* service : {L"project", L"structure", L"module", L"message", L"authorization", L"slproxy"})
        config.serviceUrls[service] = orlo::utils::toWstring(url);
    orlo::OrloConfigManager::Configure(config);
    orlo::UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    orlo::http::setRetryPolicy({0, 0});
}

BRIDGE_ENTRY std::size_t countProjects()
{
    orlo::ErrorCode error;
    return orlo::ICollaborationProjectManager::Get()->GetAllProjects(error).size();
}

/// Starts a download and doesn't wait for it.
BRIDGE_ENTRY void startDownload(const char* path)
{
    auto& error = *new orlo::ErrorCode; // the transfer writes it when the plugin is gone
    orlo::HttpClient::downloadFile(L"drawing.dwg", orlo::utils::toWstring(path), error);
}

/// Hands a file over to a job.
BRIDGE_ENTRY bool startJob(const char* file)
{
    orlo::IJobManager::Start({});
    return orlo::ICollaborationFileManager::UploadFileByJob("project-1", L"folder-1", orlo::utils::toWstring(file));
}
