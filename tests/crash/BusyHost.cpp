// Leaves main while its threads are in the middle of everything.
//
//   BusyHost ROOT URL MICROSECONDS return|exit
//
// Threads read lists, look things up, bring files and hand files over to jobs, as fast as they can, and main leaves after so many
// microseconds, or another thread calls exit.

#include "support/OwnProcess.h"
#include "support/SilentLog.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloAuth/UserSession.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// What a program leaves behind when it ends in the middle of its work is no leak.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options()
{
    return "detect_leaks=0";
}

extern "C" __attribute__((visibility("default"))) const char* __tsan_default_options()
{
    return "report_thread_leaks=0";
}

namespace {

using namespace orlo;

void forEver(const std::function<void()>& work)
{
    std::thread([work] {
        for (;;)
            work();
    }).detach();
}

void listProjects()
{
    ErrorCode error;
    ICollaborationProjectManager::Get()->GetAllProjects(error);
}

void readAProject()
{
    ErrorCode error;
    const auto project = ICollaborationProject::Load(L"p-1", error);
    if (!project)
        return;
    project->GetFolders(error);
    std::map<SpecialtyType, std::wstring> types;
    project->GetSpecialtyTypes(types, error);
    std::vector<std::shared_ptr<IProjectFont>> fonts;
    project->GetProjectFonts(fonts, error);
}

void lookUp()
{
    static std::atomic<int> number{0};
    ErrorCode error;
    ICollaborationProjectManager::Get()->GetSpecialtyTypeById(L"s-" + std::to_wstring(++number), error);
    ICollaborationProjectManager::Get()->GetDatasetInfo("d-1", error);
    ICollaborationProjectManager::Get()->GetDatasetInfosInFolder(L"f-1", error);
}

void bringAFile()
{
    static std::atomic<int> number{0};
    ErrorCode error;
    IFileManager::DownloadFile("ds-1", L"blocks/" + std::to_wstring(++number) + L"?f=x", error);
}

/// Each is another one, from either library. Waits for the outcome without asking for it: what the end of the process drops has none.
void bringATemplate()
{
    static std::atomic<int> number{0};
    ErrorCode error;
    ITemplateManager::Get()->DownloadTemplateFile(L"d-" + std::to_wstring(++number), L"p-1", error).wait();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 5)
        return 2;
    ILogManager::Install(std::make_shared<test::SilentLog>());
    utils::setLocalRoot(utils::toWstring(argv[1]));
    OrloConfig config;
    for (const wchar_t* const service : {L"project", L"structure", L"authorization"})
        config.serviceUrls[service] = utils::toWstring(argv[2]);
    OrloConfigManager::Configure(config);
    http::setRetryPolicy({1, 1});
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    const std::string file = std::string(argv[1]) + "/plan.dwg";
    std::ofstream(file) << "bytes";
    if (!IJobManager::Start({}))
        return 3;
    for (const auto& work : {&listProjects, &listProjects, &readAProject, &lookUp, &bringAFile, &bringATemplate, &bringATemplate})
        forEver(work);
    forEver([file] { ICollaborationFileManager::UploadFileByJob("p-1", L"f-1", utils::toWstring(file)); });

    std::this_thread::sleep_for(std::chrono::microseconds(std::atoi(argv[3])));
    if (argv[4] == std::string("return"))
        return 0;
    std::thread([] { std::exit(0); }).detach();
    test::waitForEver();
}
