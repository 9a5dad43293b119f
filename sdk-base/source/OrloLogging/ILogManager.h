#pragma once

#include <OrloLogging/Export.h>

#include <memory>
#include <string>

namespace orlo {

/// The logger of the process. A host that wants the lines itself derives from this class and installs its own.
class ORLO_LOGGING_API ILogManager
{
public:
    ILogManager();
    ILogManager(const ILogManager&) = delete;
    ILogManager& operator=(const ILogManager&) = delete;

    /// Never null; valid until the process is gone. What it is given goes to the installed logger, cleared of tokens and
    /// signatures first; nothing that the installed logger throws comes back.   Threads: any.
    static ILogManager* Get() noexcept;

    /// Replaces the logger of the process; null brings the default one back, which writes a rotating file below the local
    /// root and, from warning up, to stderr. The logger must take calls from any thread, and is held until it is replaced.
    static void Install(std::shared_ptr<ILogManager> logger);

    virtual void LogInfo(const std::wstring& message) = 0;
    virtual void LogWarning(const std::wstring& message) = 0;
    virtual void LogError(const std::wstring& message) = 0;
    virtual void LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                            const std::wstring& tag) = 0;

    virtual ~ILogManager();
};

} // namespace orlo
