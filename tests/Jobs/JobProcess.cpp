// A host of the job library that does what its input says, a line at a time, and answers each line with one.
//
//   JobProcess ROOT
//
// Its jobs write their names to ROOT/ran, each name in a line, before they drop their rows.

#include "Jobs/FaultyFiles.h"
#include "Jobs/TestJob.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloLogging/ILogManager.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace orlo;
using orlo::test::TestJob;

/// Keeps the latest error for whoever asks; "-" where there is none.
class LastError : public ILogManager
{
public:
    void LogInfo(const std::wstring&) override {}
    void LogWarning(const std::wstring&) override {}
    void LogError(const std::wstring& message) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_last = message;
    }
    void LogErrorAt(const std::string&, int, const std::string&, const std::wstring& message, const std::wstring&) override
    {
        LogError(message);
    }
    std::string take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_last.empty() ? "-" : utils::toString(m_last);
    }

private:
    std::mutex m_mutex;
    std::wstring m_last;
};

std::string root;
std::shared_ptr<TestJob> latest;
const auto lastError = std::make_shared<LastError>();
const auto gate = std::make_shared<test::Gate>();
std::string killPoint;

void dieAt(const std::string& point)
{
    if (point != killPoint)
        return;
    ::kill(::getpid(), SIGKILL);
    ::pause();
}

bool leaveName(TestJob& job)
{
    dieAt("run");
    const std::string line = job.name + '\n';
    const int file = ::open((root + "/ran").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    const bool isLeft = ::write(file, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    ::close(file);
    dieAt("work");
    const bool isRemoved = job.remove();
    dieAt("remove");
    return isLeft && isRemoved;
}

std::string yesOrNo(bool answer)
{
    return answer ? "yes" : "no";
}

std::string save(const std::string& name)
{
    latest = std::make_shared<TestJob>(name);
    return yesOrNo(latest->save());
}

/// Takes jobs without an end, and says the name of each that was accepted.
std::string pour(const std::string& head)
{
    for (int i = 0;; ++i) {
        const std::string name = head + std::to_string(i);
        if (save(name) == "yes")
            std::cout << name << std::endl;
        IJobManager::Get()->AddJob(latest);
    }
}

std::string limitFiles(const std::string& bytes)
{
    ::signal(SIGXFSZ, SIG_IGN);
    const rlim_t limit = bytes == "none" ? RLIM_INFINITY : static_cast<rlim_t>(std::stoul(bytes));
    const rlimit both{limit, RLIM_INFINITY};
    return yesOrNo(::setrlimit(RLIMIT_FSIZE, &both) == 0);
}

std::string becomeNobody()
{
    return yesOrNo(::geteuid() != 0 || (::setgid(65534) == 0 && ::setuid(65534) == 0));
}

std::string killAtStep(const std::string& step)
{
    static test::FaultyFiles& files = *new test::FaultyFiles;
    files.reset();
    files.killAt(std::stoi(step));
    return "yes";
}

std::string start(const std::string& workers)
{
    JobManagerOptions options;
    options.workers = workers.empty() ? 2 : static_cast<unsigned>(std::stoul(workers));
    return yesOrNo(IJobManager::Start(options));
}

std::string add()
{
    IJobManager::Get()->AddJob(latest);
    return "yes";
}

const std::map<std::string, std::function<std::string(const std::string&)>> commands = {
    {"start", start},
    {"stop", [](const std::string&) { return yesOrNo(IJobManager::Stop()); }},
    {"runs", [](const std::string&) { return yesOrNo(IJobManager::Get()->RunsJobs()); }},
    {"save", save},
    {"pour", pour},
    {"add", [](const std::string&) { return add(); }},
    {"idle", [](const std::string&) { return yesOrNo(IJobManager::Get()->WaitForIdle(std::chrono::seconds(50))); }},
    {"jobs", [](const std::string&) { return std::to_string(IJobManager::Get()->GetJobs().size()); }},
    {"hold",
     [](const std::string&) {
         TestJob::behave(test::waitAt(gate));
         return std::string("yes");
     }},
    {"held", [](const std::string&) { return std::to_string(gate->arrived()); }},
    {"limit", limitFiles},
    {"nobody", [](const std::string&) { return becomeNobody(); }},
    {"die-at",
     [](const std::string& point) {
         killPoint = point;
         return std::string("yes");
     }},
    {"die-at-step", killAtStep},
    {"error", [](const std::string&) { return lastError->take(); }},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    root = argv[1];
    ILogManager::Install(lastError);
    utils::setLocalRoot(utils::toWstring(root));
    TestJob::behave(leaveName);
    std::string line;
    while (std::getline(std::cin, line) && line != "leave") {
        std::istringstream words(line);
        std::string command;
        std::string argument;
        words >> command >> argument;
        const auto found = commands.find(command);
        std::cout << (found == commands.end() ? "what?" : found->second(argument)) << std::endl;
    }
    return 0;
}
