#include "PlatformHost.h"

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>
#include <OrloProjectManager/Projects/ICollaborationFolder.h>
#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <algorithm>
#include <stdexcept>

namespace orlo::test {

using http::ORLOHTTPPayloadDatasetVersion;

namespace {

const ICollaborationFolder* findFolder(const std::vector<ICollaborationFolder*>& folders)
{
    for (const ICollaborationFolder* const folder : folders) {
        if (folder->GetId() == L"f-1")
            return folder;
        if (const ICollaborationFolder* const found = findFolder(folder->GetSubFolders()))
            return found;
    }
    return nullptr;
}

/// A default record for a dataset without a version.
ORLOHTTPPayloadDatasetVersion newestVersion(const std::string& datasetId)
{
    ErrorCode error;
    ORLOHTTPPayloadDatasetVersion newest;
    OrloWebService::GetDatasetVersionByMvd(error, newest, datasetId, -1, L"");
    return newest;
}

} // namespace

PlatformHost::PlatformHost() : host(start(platform))
{
    platform.change(platform::addProject, {"Tower", "account-1", "p-1"});
    platform::FolderSeed folder;
    folder.id = "f-1";
    folder.name = "图纸";
    folder.parentId = rootFolder();
    platform.change(platform::addFolder, folder);
}

std::string PlatformHost::start(platform::LocalPlatform& platform)
{
    platform.change(platform::addUser, {"user-1", "account-1", "token-secret-1"});
    platform.start();
    return platform.url();
}

std::string PlatformHost::rootFolder() const
{
    return utils::toString(ICollaborationProject::Load(L"p-1")->GetFolders().at(0)->GetId());
}

std::string PlatformHost::addDataset(const std::string& name)
{
    return platform.change(platform::addDataset, {name, "f-1"});
}

bool PlatformHost::addVersion(const std::string& datasetId) const
{
    ErrorCode error;
    return OrloWebService::CreateVersionByNumber(error, utils::toWstring(datasetId), 1, L"", false, L"");
}

std::multimap<std::string, std::string> PlatformHost::datasets() const
{
    const std::shared_ptr<const ICollaborationProject> project = ICollaborationProject::Load(L"p-1");
    const std::vector<ICollaborationFolder*> folders = project ? project->GetFolders() : std::vector<ICollaborationFolder*>();
    const ICollaborationFolder* const folder = findFolder(folders);
    if (!folder)
        throw std::runtime_error("the folder can't be read");
    std::multimap<std::string, std::string> ids;
    for (const auto& dataset : folder->GetDatasets())
        ids.emplace(utils::toString(dataset->name), dataset->id);
    return ids;
}

std::vector<std::string> PlatformHost::datasets(const std::string& name) const
{
    std::vector<std::string> found;
    for (const auto& [datasetName, id] : datasets()) {
        if (datasetName == name)
            found.push_back(id);
    }
    return found;
}

int PlatformHost::versions(const std::string& datasetId) const
{
    return newestVersion(datasetId).version;
}

std::multimap<std::string, std::string> PlatformHost::contents() const
{
    std::multimap<std::string, std::string> found;
    const std::vector<platform::StoredFile> files = platform.ask(platform::storedFiles);
    for (const auto& [name, id] : datasets()) {
        const ORLOHTTPPayloadDatasetVersion version = newestVersion(id);
        // The record tells the file and its length, but not which of the file's own versions it is.
        const auto file = std::find_if(files.rbegin(), files.rend(), [&](const platform::StoredFile& candidate) {
            return candidate.fileId == utils::toString(version.dataSetSourceFile) && candidate.length == version.size;
        });
        if (version.version > 0 && file != files.rend())
            found.emplace(name, platform.ask(platform::contentOf, file->remotePath));
    }
    return found;
}

bool PlatformHost::holds(const std::string& name, const std::string& bytes) const
{
    const auto all = contents();
    const auto [begin, end] = all.equal_range(name);
    return std::any_of(begin, end, [&](const auto& entry) { return entry.second == bytes; });
}

} // namespace orlo::test
