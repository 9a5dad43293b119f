#include <OrloProjectManager/Resources/IModuleManager.h>

namespace orlo {

ICollaborationModule::ICollaborationModule() = default;
ICollaborationModule::~ICollaborationModule() = default;

IModuleManager::IModuleManager() = default;
IModuleManager::~IModuleManager() = default;

IModuleManager* IModuleManager::Get()
{
    return nullptr;
}

} // namespace orlo
