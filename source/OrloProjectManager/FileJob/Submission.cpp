// Handing files over to jobs.

#include "Submission.h"

#include "../Frame/CallFrame.h"
#include "../Projects/Folder.h"
#include "JobCopy.h"
#include "UploadFileJobEntity.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Text.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/Projects/ICollaborationFolder.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

#include <algorithm>

namespace orlo {

namespace {

using Datasets = std::vector<std::shared_ptr<DatasetInfo>>;

/// Where the files of a submission go.
struct JobTarget
{
    std::string projectId;
    std::wstring folderId;
    std::string dsId;
    int dsVersion = -1;
};

Datasets failedListing(const CallSite& site, const wchar_t* words)
{
    log::errorAt(site, words);
    return {};
}

Datasets GetFileInfoInFolder(const std::string& projectId, const std::wstring& folderId)
{
    constexpr const char* function = "orlo::CollaborationFileManager::GetFileInfoInFolder";
    const auto project = ICollaborationProject::Load(utils::toWstring(projectId));
    if (!project)
        return failedListing(ORLO_HERE(function), L"currentProject is empty");
    const auto folders = project->GetFolders();
    if (folders.empty())
        return failedListing(ORLO_HERE(function), L"get folder fail");
    const ICollaborationFolder* const folder =
        findFolder(rawPointers(folders), [&](const ICollaborationFolder& candidate) { return candidate.GetId() == folderId; });
    return folder ? folder->GetDatasets() : failedListing(ORLO_HERE(function), L"can not find folder in web");
}

/// The first dataset with that very name; null if there is none.
const DatasetInfo* findByName(const Datasets& datasets, const std::wstring& name)
{
    const auto found = std::find_if(datasets.begin(), datasets.end(), [&](const auto& dataset) { return dataset->name == name; });
    return found == datasets.end() ? nullptr : found->get();
}

bool submit(const CallSite& site, const JobTarget& target, const std::wstring& path, const std::wstring& fileName,
            const std::string& fileId)
{
    return submitJob(site, path, target.projectId, fileName, [&](const std::wstring& copy) {
        return std::make_shared<UploadFileJobEntity>(target.projectId, target.folderId, copy, utils::getFileName(copy), fileId, target.dsId,
                                                     target.dsVersion);
    });
}

} // namespace

bool submitJob(const CallSite& site, const std::wstring& path, const std::string& projectId, const std::wstring& copyName,
               const JobOfCopy& makeJob)
{
    std::wstring copy;
    if (!CopyFileToTempPath(path, projectId, copyName, copy)) {
        log::errorAt(site, L"copy file failed");
        return false;
    }
    const std::shared_ptr<UploadJobEntity> job = makeJob(copy);
    if (!job->save()) {
        log::errorAt(site, L"the job can't be saved");
        deleteJobCopy(copy);
        return false;
    }
    IJobManager* const manager = IJobManager::Get();
    if (!manager) {
        log::errorAt(site, L"pMgr is null");
        return false;
    }
    manager->AddJob(job);
    return true;
}

bool ICollaborationFileManager::IsFileExistInProject(const std::string& projectId, const std::wstring& folderId, const std::wstring& path,
                                                     std::wstring& dsId)
{
    return CallFrame(ORLO_HERE("orlo::ICollaborationFileManager::IsFileExistInProject")).runAlone([&](ErrorCode&) {
        const Datasets datasets = GetFileInfoInFolder(projectId, folderId);
        const DatasetInfo* const found = findByName(datasets, FilePath(path).GetFileName());
        if (found)
            dsId = utils::toWstring(found->id);
        return found != nullptr;
    });
}

bool ICollaborationFileManager::UploadFileByJob(const std::string& projectId, const std::wstring& folderId, const std::wstring& path)
{
    return UploadFileByJob(projectId, folderId, path, std::wstring());
}

bool ICollaborationFileManager::UploadFileByJob(const std::string& projectId, const std::wstring& folderId, const std::wstring& path,
                                                const std::wstring& fileName)
{
    constexpr const char* function = "orlo::ICollaborationFileManager::UploadFileByJob";
    return CallFrame(ORLO_HERE(function)).runAlone([&](ErrorCode&) {
        return submit(ORLO_HERE(function), {projectId, folderId, std::string(), -1}, path, fileName, std::string());
    });
}

bool ICollaborationFileManager::UpdateFileByJob(const std::string& projectId, const std::wstring& folderId, const std::wstring& fileId,
                                                const std::wstring& path)
{
    constexpr const char* function = "orlo::ICollaborationFileManager::UpdateFileByJob";
    return CallFrame(ORLO_HERE(function)).runAlone([&](ErrorCode&) {
        return submit(ORLO_HERE(function), {projectId, folderId, std::string(), -1}, path, std::wstring(), utils::toString(fileId));
    });
}

bool ICollaborationFileManager::UploadFilesByJob(const std::string& projectId, const std::wstring& folderId,
                                                 const std::vector<std::wstring>& paths)
{
    return UploadFilesWithDsByJob(projectId, folderId, paths, std::string(), -1);
}

bool ICollaborationFileManager::UploadFilesWithDsByJob(const std::string& projectId, const std::wstring& folderId,
                                                       const std::vector<std::wstring>& paths, const std::string& dsId, int dsVersion)
{
    constexpr const char* function = "orlo::ICollaborationFileManager::UploadFilesWithDsByJob";
    return CallFrame(ORLO_HERE(function)).runAlone([&](ErrorCode&) {
        if (paths.empty()) {
            log::errorAt(ORLO_HERE(function), L"fileList is empty");
            return false;
        }
        const Datasets datasets = GetFileInfoInFolder(projectId, folderId);
        const JobTarget target{projectId, folderId, dsId, dsVersion};
        for (const std::wstring& path : paths) {
            const std::wstring name = FilePath(path).GetFileName();
            const DatasetInfo* const found = findByName(datasets, name);
            if (!submit(ORLO_HERE(function), target, path, name, found ? found->id : std::string()))
                return false;
        }
        return true;
    });
}

} // namespace orlo
