#pragma once

#include <BaseCommon/Text.h>
#include <OrloLogging/ILogManager.h>

#include <exception>
#include <string>

// The lines of the job library.
namespace orlo::joblog {

inline void info(const std::wstring& message)
{
    ILogManager::Get()->LogInfo(L"[ORLOSDK]" + message);
}

inline void warning(const std::wstring& message)
{
    ILogManager::Get()->LogWarning(L"[ORLOSDK]" + message);
}

inline void error(const std::wstring& message)
{
    ILogManager::Get()->LogError(L"[ORLOSDK]" + message);
}

/// Never empty.
inline std::wstring textOf(const std::exception& thrown)
{
    std::wstring text = utils::toWstringTrimTrailingCarriageReturn(thrown.what());
    return text.empty() ? L"unknown exception" : text;
}

/// The words for the exception that is being handled.
inline std::wstring currentException()
{
    try {
        throw;
    }
    catch (const std::exception& thrown) {
        return textOf(thrown);
    }
    catch (...) {
        return L"unknown exception";
    }
}

} // namespace orlo::joblog
