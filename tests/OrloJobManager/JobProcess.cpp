// A host of the job library that does what its input says, a line at a time, and answers each line with one.
//
//   JobProcess ROOT
//
// Its jobs write their names to ROOT/ran, each name in a line, before they drop their rows.

#include "HostCommands.h"
#include "TestJob.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>

#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace orlo;
using orlo::test::dieAt;
using orlo::test::TestJob;
using orlo::test::yesOrNo;

std::string root;
std::shared_ptr<TestJob> latest;
const auto gate = std::make_shared<test::Gate>();

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

std::string add()
{
    IJobManager::Get()->AddJob(latest);
    return "yes";
}

const test::HostCommands commands = {
    {"runs", [](const std::string&) { return yesOrNo(IJobManager::Get()->RunsJobs()); }},
    {"save", save},
    {"pour", pour},
    {"add", [](const std::string&) { return add(); }},
    {"jobs", [](const std::string&) { return std::to_string(IJobManager::Get()->GetJobs().size()); }},
    {"hold",
     [](const std::string&) {
         TestJob::behave(test::waitAt(gate));
         return std::string("yes");
     }},
    {"held", [](const std::string&) { return std::to_string(gate->arrived()); }},
    {"limit", limitFiles},
    {"nobody", [](const std::string&) { return becomeNobody(); }},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    root = argv[1];
    utils::setLocalRoot(utils::toWstring(root));
    TestJob::behave(leaveName);
    return test::runHost(commands);
}
