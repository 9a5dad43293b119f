#include "BaseConfigManager.h"

#include <BaseCommon/NeverDestroyed.h>

#include <mutex>

namespace orlo {

namespace {

struct State
{
    std::mutex mutex;
    std::string defaultRemoteFolder;
};

State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

} // namespace

BaseConfigManager::BaseConfigManager() = default;
BaseConfigManager::~BaseConfigManager() = default;

BaseConfigManager* BaseConfigManager::Get() noexcept
{
    static BaseConfigManager& instance = utils::neverDestroyed(new BaseConfigManager);
    return &instance;
}

void BaseConfigManager::SetDefaultRemoteFolder(const std::string& folder)
{
    const std::lock_guard lock(state().mutex);
    state().defaultRemoteFolder = folder;
}

std::string BaseConfigManager::GetDefaultRemoteFolder() const
{
    const std::lock_guard lock(state().mutex);
    return state().defaultRemoteFolder;
}

} // namespace orlo
