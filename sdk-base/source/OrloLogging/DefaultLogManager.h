#pragma once

#include <OrloLogging/ILogManager.h>

#include <chrono>
#include <memory>
#include <mutex>

namespace spdlog {
class logger;
}

namespace orlo {

/// Writes orlo.log in the log folder, which it opens at the first line and follows when the host moves its local root;
/// three files of 5 MiB at most, which only their owner may read. Warnings and errors go to stderr too. One line for each message.
class DefaultLogManager : public ILogManager
{
public:
    DefaultLogManager();
    ~DefaultLogManager() override;

    void LogInfo(const std::wstring& message) override;
    void LogWarning(const std::wstring& message) override;
    void LogError(const std::wstring& message) override;
    void LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                    const std::wstring& tag) override;

private:
    using Clock = std::chrono::steady_clock;

    void write(int level, const std::wstring& message);
    std::shared_ptr<spdlog::logger> loggerForNow();
    void open(const std::wstring& folder);

    std::mutex m_mutex;
    std::wstring m_folder;
    std::shared_ptr<spdlog::logger> m_logger;
    bool m_hasFile = false;
    Clock::time_point m_retryAt;
};

} // namespace orlo
