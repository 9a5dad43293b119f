#pragma once

#include <OrloLogging/ILogManager.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo::test {

struct LogEntry
{
    wchar_t level = L'I'; ///< I, W, E, or @ for LogErrorAt
    std::wstring message;
    std::wstring tag;
    std::string function;
    std::string source;
    int line = 0;

    /// The whole line: L"I message", L"W message", L"E message", or L"E@function message".
    std::wstring text() const;
    /// The line of the source tree that it names; empty if there is none.
    std::string sourceLine() const;
};

/// Records what the libraries log while it lives; the default logger is back at the end.
/// Takes lines from any thread, and may be read while they come.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();

    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<LogEntry> entries() const;
    std::vector<std::wstring> lines() const;

    /// How many lines equal `line`.
    std::size_t count(const std::wstring& line) const;
    bool has(const std::wstring& line) const { return count(line) > 0; }
    /// Whether any line, tag, source or function name holds `part`; for sweeps that nothing secret is written.
    bool holds(const std::wstring& part) const;
    void clear();

private:
    class Recorder;
    std::shared_ptr<Recorder> m_recorder;
};

} // namespace orlo::test
