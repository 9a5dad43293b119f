// A host of the job library that does what its input says, a line at a time, and answers each line with one.
//
//   JobProcess ROOT
//
// Its jobs write their names to ROOT/ran, each name in a line, before they drop their rows.

#include "support/HostCommands.h"
#include "support/OwnProcess.h"
#include "support/TestJob.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>

#include <fstream>
#include <iostream>
#include <optional>
#include <string>

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
    std::ofstream file(root + "/ran", std::ios::binary | std::ios::app);
    const bool isLeft = static_cast<bool>(file << job.name + '\n' << std::flush); // at once, since other processes write too
    file.close();
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
    return yesOrNo(test::limitFileSize(bytes == "none" ? std::nullopt : std::optional<std::uint64_t>(std::stoull(bytes))));
}

std::string add()
{
    IJobManager::Get()->AddJob(latest);
    return "yes";
}

const test::LineCommands commands = {
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
    {"nobody", [](const std::string&) { return yesOrNo(test::dropRights()); }},
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
