#include "OrloConfigManager.h"

#include <BaseCommon/BaseConfigManager.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>

#include <mutex>
#include <utility>

namespace orlo {

namespace {

constexpr int defaultTimeoutSeconds = 30;

struct State
{
    std::mutex mutex;
    std::shared_ptr<const OrloConfig> config = std::make_shared<const OrloConfig>();
};

State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

} // namespace

OrloConfigManager::OrloConfigManager() = default;
OrloConfigManager::~OrloConfigManager() = default;

OrloConfigManager* OrloConfigManager::Get() noexcept
{
    static OrloConfigManager& instance = utils::neverDestroyed(new OrloConfigManager);
    return &instance;
}

void OrloConfigManager::Configure(const OrloConfig& config)
{
    auto replacement = std::make_shared<const OrloConfig>(config);
    BaseConfigManager::Get()->SetDefaultRemoteFolder(utils::toString(config.defaultRemoteFolder));
    // What was swapped out is freed after the lock is gone.
    const std::lock_guard lock(state().mutex);
    state().config.swap(replacement);
}

std::wstring OrloConfigManager::GetServiceUrl(const std::wstring& key) const
{
    const auto config = snapshot();
    const auto found = config->serviceUrls.find(key);
    return found == config->serviceUrls.end() ? std::wstring() : found->second;
}

int OrloConfigManager::httpTimeout() const
{
    const int seconds = snapshot()->httpTimeoutSeconds;
    return seconds > 0 ? seconds : defaultTimeoutSeconds;
}

std::shared_ptr<const OrloConfig> OrloConfigManager::snapshot() const
{
    const std::lock_guard lock(state().mutex);
    return state().config;
}

} // namespace orlo
