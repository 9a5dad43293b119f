#include "ErrorInfoManager.h"

#include <BaseCommon/NeverDestroyed.h>

#include <mutex>

namespace orlo {

namespace {

struct LastError
{
    std::mutex mutex;
    std::wstring message;
    ErrorType type = ErrorType::connection;
};

LastError& lastError()
{
    static LastError& state = utils::neverDestroyed(new LastError);
    return state;
}

} // namespace

OrloErrorInfoManager& OrloErrorInfoManager::getInstance()
{
    static OrloErrorInfoManager& instance = utils::neverDestroyed(new OrloErrorInfoManager);
    return instance;
}

void OrloErrorInfoManager::SetLastError(const std::wstring& message, ErrorType type)
{
    LastError& state = lastError();
    const std::lock_guard lock(state.mutex);
    state.message = message;
    state.type = type;
}

std::wstring OrloErrorInfoManager::GetLastErrorMessage() const
{
    LastError& state = lastError();
    const std::lock_guard lock(state.mutex);
    return state.message;
}

ErrorType OrloErrorInfoManager::GetLastErrorType() const
{
    LastError& state = lastError();
    const std::lock_guard lock(state.mutex);
    return state.type;
}

} // namespace orlo
