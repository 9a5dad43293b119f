#include "Log.h"

#include <OrloLogging/ILogManager.h>

namespace orlo {

const wchar_t* const logTag = L"[ORLOSDK]";

namespace log {

void info(const std::wstring& message)
{
    ILogManager::Get()->LogInfo(logTag + message);
}

void warning(const std::wstring& message)
{
    ILogManager::Get()->LogWarning(logTag + message);
}

void error(const std::wstring& message)
{
    ILogManager::Get()->LogError(logTag + message);
}

void errorUntagged(const std::wstring& message)
{
    ILogManager::Get()->LogError(message);
}

void errorAt(const CallSite& site, const std::wstring& message)
{
    ILogManager::Get()->LogErrorAt(site.source, site.line, site.function, message, logTag);
}

} // namespace log
} // namespace orlo
