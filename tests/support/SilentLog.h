#pragma once

#include <OrloLogging/ILogManager.h>

#include <string>

namespace orlo::test {

/// Takes all that is logged, and does nothing with it but what a class above it wants.
class SilentLog : public ILogManager
{
public:
    void LogInfo(const std::wstring&) override {}
    void LogWarning(const std::wstring&) override {}
    void LogError(const std::wstring&) override {}
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring&, const std::wstring&) override {}
};

} // namespace orlo::test
