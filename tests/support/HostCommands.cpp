#include "HostCommands.h"

#include "FaultyFiles.h"
#include "OwnProcess.h"
#include "SilentLog.h"

#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>

#include <memory>
#include <mutex>
#include <utility>

namespace orlo::test {

namespace {

/// Keeps the errors for whoever asks.
class Errors : public SilentLog
{
public:
    void LogError(const std::wstring& message) override
    {
        const std::lock_guard lock(m_mutex);
        m_all += (m_all.empty() ? L"" : L" / ") + message;
    }
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring& message, const std::wstring&) override
    {
        LogError(message);
    }
    std::string take()
    {
        const std::lock_guard lock(m_mutex);
        const std::wstring all = std::exchange(m_all, {});
        return all.empty() ? "-" : utils::toString(all);
    }

private:
    std::mutex m_mutex;
    std::wstring m_all;
};

std::string killPoint;

std::string start(const std::string& workers)
{
    JobManagerOptions options;
    options.workers = workers.empty() ? 2 : static_cast<unsigned>(std::stoul(workers));
    return yesOrNo(IJobManager::Start(options));
}

std::string killAtStep(const std::string& step)
{
    static FaultyFiles& files = *new FaultyFiles;
    files.reset();
    files.killAt(std::stoi(step));
    return "yes";
}

LineCommands commonCommands(const std::shared_ptr<Errors>& errors)
{
    return {
        {"start", start},
        {"stop", [](const std::string&) { return yesOrNo(IJobManager::Stop()); }},
        {"idle", [](const std::string&) { return yesOrNo(IJobManager::Get()->WaitForIdle(std::chrono::seconds(50))); }},
        {"error", [errors](const std::string&) { return errors->take(); }},
        {"die-at",
         [](const std::string& point) {
             killPoint = point;
             return std::string("yes");
         }},
        {"die-at-step", killAtStep},
    };
}

} // namespace

void dieAt(const std::string& point)
{
    if (point == killPoint)
        killOwnProcess();
}

int runHost(const LineCommands& commands)
{
    const auto errors = std::make_shared<Errors>();
    ILogManager::Install(errors);
    LineCommands all = commonCommands(errors);
    all.insert(commands.begin(), commands.end());
    return obeyInput(all);
}

} // namespace orlo::test
