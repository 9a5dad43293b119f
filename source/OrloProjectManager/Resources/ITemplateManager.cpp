#include "TemplateManager.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo {

ITemplateManager::ITemplateManager() = default;
ITemplateManager::~ITemplateManager() = default;

ITemplateManager* ITemplateManager::Get()
{
    static auto& manager = utils::neverDestroyed(new TemplateManager);
    return &manager;
}

} // namespace orlo
