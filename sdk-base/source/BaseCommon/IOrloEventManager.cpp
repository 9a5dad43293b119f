#include "IOrloEventManager.h"

#include <atomic>

namespace orlo {

namespace {

std::atomic<IOrloEventManager*> installedManager{nullptr};

} // namespace

IOrloEventManager::IOrloEventManager() = default;
IOrloEventManager::~IOrloEventManager() = default;

IOrloEventManager* IOrloEventManager::Get() noexcept
{
    return installedManager.load(std::memory_order_acquire);
}

void IOrloEventManager::Install(IOrloEventManager* manager) noexcept
{
    installedManager.store(manager, std::memory_order_release);
}

} // namespace orlo
