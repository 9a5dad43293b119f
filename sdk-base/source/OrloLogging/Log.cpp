#include "Log.h"

#include <OrloLogging/ILogManager.h>

namespace orlo::log {

namespace {

// No std::wstring: a call on another thread may still log while the statics of the process go.
constexpr const wchar_t* tag = L"[ORLOSDK]";

} // namespace

void info(const std::wstring& message)
{
    ILogManager::Get()->LogInfo(tag + message);
}

void warning(const std::wstring& message)
{
    ILogManager::Get()->LogWarning(tag + message);
}

void error(const std::wstring& message)
{
    ILogManager::Get()->LogError(tag + message);
}

void errorUntagged(const std::wstring& message)
{
    ILogManager::Get()->LogError(message);
}

void errorAt(const CallSite& site, const std::wstring& message)
{
    ILogManager::Get()->LogErrorAt(site.source, site.line, site.function, message, tag);
}

} // namespace orlo::log
