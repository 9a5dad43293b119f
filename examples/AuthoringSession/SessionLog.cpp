#include "SessionLog.h"

#include <BaseCommon/Text.h>

namespace session {

void SessionLog::LogInfo(const std::wstring& message)
{
    const std::lock_guard lock(m_mutex);
    m_lines.push_back(message);
}

void SessionLog::LogWarning(const std::wstring& message)
{
    LogInfo(L"warning: " + message);
}

void SessionLog::LogError(const std::wstring& message)
{
    LogInfo(L"error: " + message);
}

void SessionLog::LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                            const std::wstring& tag)
{
    const std::string place = functionName + " (" + sourcePath + ":" + std::to_string(line) + ")";
    LogError(tag + orlo::utils::toWstring(place) + L" - " + message);
}

std::vector<std::wstring> SessionLog::lines() const
{
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

} // namespace session
