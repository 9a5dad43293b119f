#include "LogCapture.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <utility>

namespace orlo::test {

std::wstring LogEntry::text() const
{
    if (level == L'@')
        return L"E@" + utils::toWstring(function) + L' ' + message;
    return std::wstring(1, level) + L' ' + message;
}

std::string LogEntry::sourceLine() const
{
    std::ifstream file(std::filesystem::path(ORLO_SOURCE_TREE) / source);
    std::string text;
    for (int at = 0; at < line && file; ++at)
        std::getline(file, text);
    return file ? text : std::string();
}

class LogCapture::Recorder : public ILogManager
{
public:
    void LogInfo(const std::wstring& message) override { add(L'I', message); }
    void LogWarning(const std::wstring& message) override { add(L'W', message); }
    void LogError(const std::wstring& message) override { add(L'E', message); }
    void LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                    const std::wstring& tag) override
    {
        add(LogEntry{L'@', message, tag, functionName, sourcePath, line});
    }

    std::vector<LogEntry> entries() const
    {
        const std::lock_guard lock(m_mutex);
        return m_entries;
    }
    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_entries.clear();
    }

private:
    void add(wchar_t level, const std::wstring& message)
    {
        LogEntry entry;
        entry.level = level;
        entry.message = message;
        add(std::move(entry));
    }
    void add(LogEntry entry)
    {
        const std::lock_guard lock(m_mutex);
        m_entries.push_back(std::move(entry));
    }

    mutable std::mutex m_mutex;
    std::vector<LogEntry> m_entries;
};

LogCapture::LogCapture() : m_recorder(std::make_shared<Recorder>())
{
    ILogManager::Install(m_recorder);
}

LogCapture::~LogCapture()
{
    ILogManager::Install(nullptr);
}

std::vector<LogEntry> LogCapture::entries() const
{
    return m_recorder->entries();
}

std::vector<std::wstring> LogCapture::lines() const
{
    std::vector<std::wstring> lines;
    for (const LogEntry& entry : entries())
        lines.push_back(entry.text());
    return lines;
}

std::size_t LogCapture::count(const std::wstring& line) const
{
    const auto all = lines();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), line));
}

bool LogCapture::holds(const std::wstring& part) const
{
    const auto all = entries();
    return std::any_of(all.begin(), all.end(), [&](const LogEntry& entry) {
        const std::wstring whole = entry.text() + L'\n' + entry.tag + L'\n' + utils::toWstring(entry.source);
        return whole.find(part) != std::wstring::npos;
    });
}

void LogCapture::clear()
{
    m_recorder->clear();
}

} // namespace orlo::test
