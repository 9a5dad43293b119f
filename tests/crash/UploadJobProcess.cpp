// A host that hands files over to jobs as its input says, a line at a time.
//
//   UploadJobProcess ROOT URL
//
// ROOT is its local root, URL the platform's address. Files go to the folder "f-1" of the project "p-1", modules to its category "c-1".

#include "support/HostCommands.h"
#include "support/OwnProcess.h"
#include "support/Waiting.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloNetwork/Reachability.h>
#include <OrloProjectManager/FileJob/JobCopy.h>
#include <OrloProjectManager/FileJob/UploadFileJobEntity.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>
#include <OrloProjectManager/Resources/IModuleManager.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>

namespace {

using namespace orlo;
using orlo::test::dieAt;
using orlo::test::yesOrNo;
using Files = ICollaborationFileManager;

std::string root;

std::string upload(const std::string& path)
{
    return yesOrNo(Files::UploadFileByJob("p-1", L"f-1", utils::toWstring(path)));
}

/// DATASET PATH: the file is bound to the first version of the dataset.
std::string uploadWith(const std::string& argument)
{
    const std::size_t blank = argument.find(' ');
    return yesOrNo(
        Files::UploadFilesWithDsByJob("p-1", L"f-1", {utils::toWstring(argument.substr(blank + 1))}, argument.substr(0, blank), 1));
}

/// The module is named as the file is, less its extension.
std::string uploadModule(const std::string& path)
{
    ErrorCode error;
    return yesOrNo(IModuleManager::Get()->UploadModuleByJob(L"projects", L"p-1", L"beam", L"c-1", SpecialtyType::ZOK, L"m-1",
                                                            utils::toWstring(path), L"", error));
}

/// A job that dies where it is told to. The one that is made of its row is a common one.
template <class Entity>
class DyingJob : public Entity
{
public:
    using Entity::Entity;

    bool Run() override
    {
        dieAt("run");
        const bool result = Entity::Run();
        dieAt("end");
        return result;
    }
    bool remove() override
    {
        dieAt("uploaded");
        const bool result = Entity::remove();
        dieAt("removed");
        return result;
    }
};

class DyingFileJob : public DyingJob<UploadFileJobEntity>
{
public:
    explicit DyingFileJob(const std::wstring& copy, const std::wstring& folderId = L"f-1", const std::wstring& name = L"")
        : DyingJob("p-1", folderId, copy, name, "", "", -1)
    {}

protected:
    CollaborationFileManager* fileManager() const override
    {
        dieAt("upload");
        return UploadFileJobEntity::fileManager();
    }
};

class DyingTemplateJob : public DyingFileJob
{
public:
    explicit DyingTemplateJob(const std::wstring& copy) : DyingFileJob(copy, L"", L"样板") { setTemplate(L"ZOK"); }
};

class DyingModuleJob : public DyingJob<UploadModuleJobEntity>
{
public:
    explicit DyingModuleJob(const std::wstring& copy) : DyingJob(L"m-1", L"", L"projects", "p-1", L"beam", L"c-1", L"zok", copy, L"") {}

protected:
    IModuleUploads* moduleManager() const override
    {
        dieAt("upload");
        return UploadModuleJobEntity::moduleManager();
    }
};

/// What a submission does, with the steps of a job's life as points to die at.
template <class Job>
std::string uploadDying(const std::string& path)
{
    dieAt("submitted");
    std::wstring copy;
    if (!CopyFileToTempPath(utils::toWstring(path), "p-1", L"", copy))
        return "no";
    dieAt("copied");
    const auto job = std::make_shared<Job>(copy);
    if (!job->save())
        return "no";
    dieAt("saved");
    IJobManager::Get()->AddJob(job);
    dieAt("added");
    return "yes";
}

void waitForRoom()
{
    test::waitUntil([] { return IJobManager::Get()->GetJobs().size() <= 20; });
}

/// Hands over files without an end, and says the name of each that was accepted. Each file holds its own name ten thousand times.
std::string pour(const std::string& head)
{
    for (int i = 0;; ++i) {
        waitForRoom();
        const std::string name = head + std::to_string(i);
        std::ofstream file(root + "/Local/" + name, std::ios::binary);
        for (int n = 0; n < 10000; ++n)
            file << name;
        file.close();
        if (upload(root + "/Local/" + name) == "yes")
            std::cout << name << std::endl;
    }
}

/// NUMBER HEAD: hands over so many small files that are named by the head and their number, each with its name in it.   Answers how many
/// were accepted.
std::string uploadMany(const std::string& argument)
{
    const std::size_t blank = argument.find(' ');
    const int wanted = std::stoi(argument.substr(0, blank));
    int accepted = 0;
    for (int i = 0; i < wanted; ++i) {
        const std::string name = argument.substr(blank + 1) + std::to_string(i);
        const std::string path = root + "/Local/" + name;
        std::ofstream(path, std::ios::binary) << name;
        accepted += upload(path) == "yes" ? 1 : 0;
    }
    return std::to_string(accepted);
}

std::string startImpatient(const std::string&)
{
    JobManagerOptions options;
    options.stopWithin = std::chrono::milliseconds(1);
    return yesOrNo(IJobManager::Start(options));
}

/// MILLISECONDS: keeps what may succeed later, and rests so long. No request is repeated by itself.
std::string startKeeping(const std::string& milliseconds)
{
    http::setRetryPolicy({0, 1});
    JobManagerOptions options;
    options.onFailure = keepIfItMaySucceed;
    options.firstPause = options.longestPause = std::chrono::milliseconds(std::stoll(milliseconds));
    return yesOrNo(IJobManager::Start(options));
}

/// Starts no job before somebody is signed in and the platform within reach.
std::string startOnline(const std::string&)
{
    JobManagerOptions options;
    options.mayStart = http::isSignedInAndOnline;
    return yesOrNo(IJobManager::Start(options));
}

/// Between a failed request and the next attempt there is an hour.
std::string pauseLong(const std::string&)
{
    http::setRetryPolicy({3, 3600});
    return "yes";
}

std::string signOut(const std::string&)
{
    UserSession::SignOut();
    return "yes";
}

/// Signs out while another thread waits in Stop.
std::string stopAndSignOut(const std::string&)
{
    bool result = false;
    std::thread stopping([&] { result = IJobManager::Stop(); });
    const bool hasBegun = test::waitUntil([] { return !IJobManager::Get(); }, std::chrono::seconds(20), std::chrono::milliseconds(0));
    UserSession::SignOut();
    stopping.join();
    return yesOrNo(result && hasBegun);
}

std::string exitElsewhere(const std::string&)
{
    std::thread([] { std::exit(0); }).detach();
    test::waitForEver();
}

/// Asks the platform for something.
std::string askForProjects(const std::string&)
{
    ErrorCode error;
    ICollaborationProjectManager::Get()->GetAllProjects(error);
    return yesOrNo(error.isClear());
}

const test::LineCommands commands = {
    {"upload", upload},
    {"upload-with", uploadWith},
    {"upload-dying", uploadDying<DyingFileJob>},
    {"upload-module", uploadModule},
    {"upload-module-dying", uploadDying<DyingModuleJob>},
    {"upload-template-dying", uploadDying<DyingTemplateJob>},
    {"pour", pour},
    {"upload-many", uploadMany},
    {"start-impatient", startImpatient},
    {"start-keeping", startKeeping},
    {"start-online", startOnline},
    {"pause-long", pauseLong},
    {"sign-out", signOut},
    {"stop-and-sign-out", stopAndSignOut},
    {"exit-elsewhere", exitElsewhere},
    {"projects", askForProjects},
};

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 2;
    root = argv[1];
    utils::setLocalRoot(utils::toWstring(root));
    OrloConfig config;
    for (const wchar_t* const service : {L"project", L"structure", L"module"})
        config.serviceUrls[service] = utils::toWstring(std::string(argv[2]));
    OrloConfigManager::Configure(config);
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    return test::runHost(commands);
}
