#include "ILogManager.h"

#include "DefaultLogManager.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloLogging/Redaction.h>
#include <OrloLogging/SecretGuard.h>

#include <mutex>
#include <utility>

namespace orlo {

namespace {

struct Installed
{
    std::mutex mutex;
    std::shared_ptr<ILogManager> logger; // null: the default one
};

// This, the default logger and the facade are never destroyed: lines are written until the process is gone.
Installed& installed()
{
    static Installed& instance = utils::neverDestroyed(new Installed);
    return instance;
}

ILogManager& defaultLogger()
{
    static ILogManager& instance = utils::neverDestroyed(new DefaultLogManager);
    return instance;
}

std::wstring clean(const std::wstring& message)
{
    return redact(message, SecretGuard::secrets());
}

// What everybody logs to. Holds the installed logger for the length of each call, so that it may be replaced meanwhile.
class Facade : public ILogManager
{
public:
    void LogInfo(const std::wstring& message) override
    {
        forward([&](ILogManager& logger) { logger.LogInfo(clean(message)); });
    }
    void LogWarning(const std::wstring& message) override
    {
        forward([&](ILogManager& logger) { logger.LogWarning(clean(message)); });
    }
    void LogError(const std::wstring& message) override
    {
        forward([&](ILogManager& logger) { logger.LogError(clean(message)); });
    }
    void LogErrorAt(const std::string& sourcePath, int line, const std::string& functionName, const std::wstring& message,
                    const std::wstring& tag) override
    {
        forward([&](ILogManager& logger) { logger.LogErrorAt(sourcePath, line, functionName, clean(message), tag); });
    }

private:
    static std::shared_ptr<ILogManager> current()
    {
        const std::lock_guard lock(installed().mutex);
        return installed().logger;
    }

    // A line is never worth a failure of what it tells about.
    template <class Write>
    static void forward(const Write& write) noexcept
    {
        try {
            const auto logger = current();
            write(logger ? *logger : defaultLogger());
        }
        catch (...) {
        }
    }
};

} // namespace

ILogManager::ILogManager() = default;
ILogManager::~ILogManager() = default;

ILogManager* ILogManager::Get() noexcept
{
    static ILogManager& facade = utils::neverDestroyed(new Facade);
    return &facade;
}

void ILogManager::Install(std::shared_ptr<ILogManager> logger)
{
    // A facade installed as the logger would call itself for ever.
    if (logger.get() == Get())
        return;
    {
        const std::lock_guard lock(installed().mutex);
        installed().logger.swap(logger);
    }
    // The old logger goes outside the lock: its destructor may log.
}

} // namespace orlo
