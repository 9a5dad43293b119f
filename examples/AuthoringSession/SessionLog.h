#pragma once

#include <OrloLogging/ILogManager.h>

#include <mutex>
#include <vector>

namespace session {

/// The libraries' log lines of the session, kept instead of written. The libraries have cleared them of secrets already.
class SessionLog : public orlo::ILogManager
{
public:
    void LogInfo(const std::wstring& message) override;
    void LogWarning(const std::wstring& message) override;
    void LogError(const std::wstring& message) override;
    void LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                    const std::wstring& tag) override;

    std::vector<std::wstring> lines() const;

private:
    mutable std::mutex m_mutex;
    std::vector<std::wstring> m_lines;
};

} // namespace session
