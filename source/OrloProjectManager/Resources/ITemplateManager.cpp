#include <OrloProjectManager/Resources/ITemplateManager.h>

namespace orlo {

ITemplateManager::ITemplateManager() = default;
ITemplateManager::~ITemplateManager() = default;

ITemplateManager* ITemplateManager::Get()
{
    return nullptr;
}

} // namespace orlo
