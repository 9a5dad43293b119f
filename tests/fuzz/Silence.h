#pragma once

#include <OrloLogging/ILogManager.h>

namespace orlo::fuzz {

/// Keeps the log of what is refused away from the disk. Installed once, for the life of the process.
class Silence final : public ILogManager
{
public:
    static void install()
    {
        static const bool isInstalled = (ILogManager::Install(std::make_shared<Silence>()), true);
        static_cast<void>(isInstalled);
    }

    void LogInfo(const std::wstring& /*message*/) override {}
    void LogWarning(const std::wstring& /*message*/) override {}
    void LogError(const std::wstring& /*message*/) override {}
    void LogErrorAt(const std::string& /*sourcePath*/, int /*line*/, const std::string& /*functionName*/, const std::wstring& /*message*/,
                    const std::wstring& /*tag*/) override
    {}
};

} // namespace orlo::fuzz
