#pragma once

#include <OrloLogging/Export.h>

#include <string>

namespace orlo {

/// Where a log line comes from: the source, and the operation under its qualified name.
struct CallSite
{
    const char* source;
    int line;
    const char* function;
};

/// Made where the line is written, or where the operation is called that writes it. The name of the enclosing function keeps it out of
/// file level, where its line would be that of a constant.
#define ORLO_HERE(function) (static_cast<void>(__func__), ::orlo::CallSite{__FILE__, __LINE__, function})

/// The lines of these libraries. Their tag stands at the head of a message, or beside it where a position goes along.
namespace log {

ORLO_LOGGING_API void info(const std::wstring& message);
ORLO_LOGGING_API void warning(const std::wstring& message);
ORLO_LOGGING_API void error(const std::wstring& message);
/// For the few lines that hosts look for without the tag.
ORLO_LOGGING_API void errorUntagged(const std::wstring& message);
ORLO_LOGGING_API void errorAt(const CallSite& site, const std::wstring& message);

} // namespace log
} // namespace orlo
