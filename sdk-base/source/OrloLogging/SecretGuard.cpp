#include "SecretGuard.h"

#include <BaseCommon/NeverDestroyed.h>

#include <algorithm>
#include <mutex>

namespace orlo {

namespace {

constexpr std::size_t remembered = 16;

struct State
{
    std::mutex mutex;
    std::vector<std::wstring> secrets; // the latest first
};

State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

} // namespace

void SecretGuard::protect(const std::wstring& secret)
{
    if (secret.empty())
        return;
    const std::lock_guard lock(state().mutex);
    auto& secrets = state().secrets;
    secrets.erase(std::remove(secrets.begin(), secrets.end(), secret), secrets.end());
    secrets.insert(secrets.begin(), secret);
    if (secrets.size() > remembered)
        secrets.pop_back();
}

std::vector<std::wstring> SecretGuard::secrets()
{
    const std::lock_guard lock(state().mutex);
    return state().secrets;
}

} // namespace orlo
