#pragma once

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

/// The tag of this library. It stands at the head of a message, or beside it where a position goes along.
extern const wchar_t* const logTag;

namespace log {

void info(const std::wstring& message);
void warning(const std::wstring& message);
void error(const std::wstring& message);
/// For the few messages that go out without the tag at their head.
void errorUntagged(const std::wstring& message);
void errorAt(const CallSite& site, const std::wstring& message);

} // namespace log
} // namespace orlo
