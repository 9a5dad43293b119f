#include "HostCommands.h"

#include "support/FaultyFiles.h"

#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloLogging/ILogManager.h>

#include <csignal>
#include <iostream>
#include <memory>
#include <mutex>
#include <unistd.h>
#include <utility>

namespace orlo::test {

namespace {

/// Keeps the errors for whoever asks.
class Errors : public ILogManager
{
public:
    void LogInfo(const std::wstring&) override {}
    void LogWarning(const std::wstring&) override {}
    void LogError(const std::wstring& message) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_all += (m_all.empty() ? L"" : L" / ") + message;
    }
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring& message, const std::wstring&) override
    {
        LogError(message);
    }
    std::string take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
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

HostCommands commonCommands(const std::shared_ptr<Errors>& errors)
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
    if (point != killPoint)
        return;
    ::kill(::getpid(), SIGKILL);
    ::pause();
}

std::string yesOrNo(bool answer)
{
    return answer ? "yes" : "no";
}

int runHost(const HostCommands& commands)
{
    const auto errors = std::make_shared<Errors>();
    ILogManager::Install(errors);
    HostCommands all = commonCommands(errors);
    all.insert(commands.begin(), commands.end());
    std::string line;
    while (std::getline(std::cin, line) && line != "leave") {
        const std::string command = line.substr(0, line.find(' '));
        const std::string argument = command.size() < line.size() ? line.substr(command.size() + 1) : std::string();
        const auto found = all.find(command);
        std::cout << (found == all.end() ? "what?" : found->second(argument)) << std::endl;
    }
    return 0;
}

} // namespace orlo::test
