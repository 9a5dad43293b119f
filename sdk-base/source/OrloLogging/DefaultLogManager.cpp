#include "DefaultLogManager.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/NotOnTerminal.h>

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

namespace orlo {

namespace {

constexpr std::size_t fileSize = std::size_t{5} * 1024 * 1024;
constexpr std::size_t rotatedFiles = 2;
constexpr std::size_t longestMessage = std::size_t{16} * 1024;
constexpr std::chrono::seconds pauseAfterFailure{30};
constexpr const char* linePattern = "%Y-%m-%dT%H:%M:%S.%e%z %P/%t %l %v";

// What a terminal or an editor takes for a line end or for a change of the reading order.
bool isControl(wchar_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029 || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

void appendEscaped(std::wstring& out, wchar_t c)
{
    if (c == L'\n') {
        out += L"\\n";
    }
    else if (c == L'\r') {
        out += L"\\r";
    }
    else if (c == L'\t') {
        out += L"\\t";
    }
    else {
        constexpr wchar_t digits[] = L"0123456789abcdef";
        const auto value = static_cast<unsigned>(c);
        out += L"\\u";
        for (int shift = 12; shift >= 0; shift -= 4)
            out += digits[(value >> shift) & 0xF];
    }
}

// A message must not be able to forge further lines, nor to fill the log by itself.
std::string toLine(const std::wstring& message)
{
    const std::size_t shown = std::min(message.size(), longestMessage);
    std::wstring line;
    line.reserve(shown);
    for (std::size_t i = 0; i < shown; ++i) {
        if (isControl(message[i]))
            appendEscaped(line, message[i]);
        else
            line += message[i];
    }
    if (shown < message.size())
        line += L"... (" + std::to_wstring(message.size() - shown) + L" more characters)";
    return utils::toString(line);
}

std::shared_ptr<spdlog::logger> makeLogger(std::vector<spdlog::sink_ptr> sinks)
{
    auto logger = std::make_shared<spdlog::logger>("orlo", sinks.begin(), sinks.end());
    logger->set_pattern(linePattern);
    logger->flush_on(spdlog::level::info);
    // A full disk must not be told of by more lines.
    logger->set_error_handler([](const std::string&) {});
    return logger;
}

/// Beside a file some lines may be left out; where stderr is all there is, it gets them all.
class StderrSink : public spdlog::sinks::stderr_sink_mt
{
public:
    explicit StderrSink(bool hasFile) : m_hasFile(hasFile) { set_level(spdlog::level::warn); }

    void log(const spdlog::details::log_msg& message) override
    {
        if (!m_hasFile || !log::NotOnTerminal::isInForce())
            spdlog::sinks::stderr_sink_mt::log(message);
    }

private:
    const bool m_hasFile;
};

std::wstring logFile(const std::wstring& folder, std::size_t number)
{
    return FilePath::Combine(folder, number == 0 ? L"orlo.log" : L"orlo." + std::to_wstring(number) + L".log");
}

// The lines tell of people and their projects. spdlog would make its files readable for everybody: each is made before spdlog opens it,
// and looked at again once it is open, as another process may have rotated the files in between.
spdlog::file_event_handlers keepPrivate(const std::wstring& file)
{
    spdlog::file_event_handlers handlers;
    handlers.before_open = [file](const spdlog::filename_t&) { utils::makeFilePrivate(file); };
    handlers.after_open = [file](const spdlog::filename_t&, std::FILE*) { utils::makeFilePrivate(file); };
    return handlers;
}

// An earlier version may have left them readable.
void tightenRotatedFiles(const std::wstring& folder)
{
    for (std::size_t number = 1; number <= rotatedFiles; ++number) {
        if (utils::fileExists(logFile(folder, number)))
            utils::makeFilePrivate(logFile(folder, number));
    }
}

spdlog::sink_ptr fileSink(const std::wstring& folder)
{
    const std::wstring file = logFile(folder, 0);
    tightenRotatedFiles(folder);
    return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(utils::makePath(file).native(), fileSize, rotatedFiles, false,
                                                                  keepPrivate(file));
}

} // namespace

DefaultLogManager::DefaultLogManager() = default;
DefaultLogManager::~DefaultLogManager() = default;

void DefaultLogManager::LogInfo(const std::wstring& message)
{
    write(spdlog::level::info, message);
}

void DefaultLogManager::LogWarning(const std::wstring& message)
{
    write(spdlog::level::warn, message);
}

void DefaultLogManager::LogError(const std::wstring& message)
{
    write(spdlog::level::err, message);
}

void DefaultLogManager::LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                                   const std::wstring& tag)
{
    const std::wstring place = utils::toWstring(functionName) + L" (" + utils::toWstring(sourcePath) + L":" + std::to_wstring(line) + L")";
    write(spdlog::level::err, tag + place + L" - " + message);
}

void DefaultLogManager::write(int level, const std::wstring& message)
{
    loggerForNow()->log(static_cast<spdlog::level::level_enum>(level), spdlog::string_view_t(toLine(message)));
}

std::shared_ptr<spdlog::logger> DefaultLogManager::loggerForNow()
{
    const std::wstring folder = utils::getLogPath();
    const std::lock_guard lock(m_mutex);
    if (!m_logger || folder != m_folder || (!m_hasFile && Clock::now() >= m_retryAt))
        open(folder);
    return m_logger;
}

// Opening a file that can't be opened takes its time, so a failure holds for a while.
void DefaultLogManager::open(const std::wstring& folder)
{
    const bool sayWhy = !m_logger || folder != m_folder;
    std::vector<spdlog::sink_ptr> sinks;
    m_folder = folder;
    m_hasFile = false;
    try {
        sinks.push_back(fileSink(folder));
        m_hasFile = true;
    }
    catch (const std::exception&) {
        m_retryAt = Clock::now() + pauseAfterFailure;
    }
    sinks.push_back(std::make_shared<StderrSink>(m_hasFile));
    m_logger = makeLogger(std::move(sinks));
    if (!m_hasFile && sayWhy)
        m_logger->warn(toLine(L"no log file in \"" + folder + L"\", the log goes to stderr only"));
}

} // namespace orlo
