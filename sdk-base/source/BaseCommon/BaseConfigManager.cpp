#include <BaseCommon/BaseConfigManager.h>

#include <mutex>

namespace orlo {

namespace {

struct State
{
    std::mutex mutex;
    std::string defaultRemoteFolder;
};

// Never destroyed: transfers may still ask while the process ends.
State& state()
{
    static State* const instance = new State;
    return *instance;
}

} // namespace

BaseConfigManager::BaseConfigManager() = default;
BaseConfigManager::~BaseConfigManager() = default;

BaseConfigManager* BaseConfigManager::Get() noexcept
{
    static BaseConfigManager* const instance = new BaseConfigManager;
    return instance;
}

void BaseConfigManager::SetDefaultRemoteFolder(const std::string& folder)
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().defaultRemoteFolder = folder;
}

std::string BaseConfigManager::GetDefaultRemoteFolder() const
{
    const std::lock_guard<std::mutex> lock(state().mutex);
    return state().defaultRemoteFolder;
}

} // namespace orlo
