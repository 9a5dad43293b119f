#include "ModuleManager.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloProjectManager/Transfer/HttpClient.h>

namespace orlo {

ICollaborationModule::ICollaborationModule() = default;
ICollaborationModule::~ICollaborationModule() = default;

IModuleManager::IModuleManager() = default;
IModuleManager::~IModuleManager() = default;

IModuleManager* IModuleManager::Get()
{
    static auto& manager = utils::neverDestroyed(new ModuleManager);
    return &manager;
}

std::future<PromiseData> IModuleManager::DownloadModuleFile(const std::wstring& requestBody, const std::wstring& localPath,
                                                            const std::wstring& resourceType, const std::wstring& spaceType,
                                                            const std::wstring& spaceTypeParameter, ErrorCode& error)
{
    return HttpClient::downloadModuleFile(requestBody, localPath, resourceType, spaceType, spaceTypeParameter, error);
}

} // namespace orlo
