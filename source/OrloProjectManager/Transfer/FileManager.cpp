#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Transfer/FileWeb.h"
#include "BatchDownload.h"
#include "CachePlace.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/HttpClient.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo {

namespace {

class FileManager final : public IFileManager
{};

std::wstring failed(const std::wstring& words)
{
    log::error(words);
    return {};
}

std::wstring downloadThroughCache(const std::string& dsId, const std::wstring& uri, ErrorCode& error)
{
    DatasetUri parsed;
    CachePlace place;
    if (!parse(uri, parsed) || !findPlace(utils::getLocalFileCachePath(), dsId, parsed, place))
        return failed(L"invalid uri: " + uri);
    if (isCached(place.root, place.file))
        return place.file;
    if (!utils::hasDirectory(place.folder) && !utils::createDirectoryRecursively(place.folder))
        return failed(L"failed to create path: " + place.folder);
    const std::vector<std::string> seeds{utils::toString(parsed.relative)};
    const PromiseData outcome = downloadBatch(error, utils::toString(parsed.folder), dsId, seeds, nullptr, EmptyBatch::fails).get();
    // For a batch a file that can't be moved to its place counts as brought.
    return outcome.success && isCached(place.root, place.file) ? place.file : failed(L"failed to download file from uri: " + uri);
}

} // namespace

IFileManager::IFileManager() = default;
IFileManager::~IFileManager() = default;

IFileManager* IFileManager::Get()
{
    static auto& manager = utils::neverDestroyed(new FileManager);
    return &manager;
}

std::wstring IFileManager::DownloadFile(const std::string& dsId, const std::wstring& uri, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IFileManager::DownloadFile")).run(error, [&] { return downloadThroughCache(dsId, uri, error); });
}

std::future<PromiseData> IFileManager::DownloadFile(const std::wstring& remotePath, const std::wstring& localPath, ErrorCode& error)
{
    return HttpClient::downloadFile(remotePath, localPath, error);
}

std::future<PromiseData> IFileManager::DownloadFileByArkiv(const std::wstring& fileId, const std::wstring& localPath, ErrorCode& error)
{
    return DownloadFileByArkiv(fileId, 1, localPath, error);
}

std::future<PromiseData> IFileManager::DownloadFileByArkiv(const std::wstring& fileId, int version, const std::wstring& localPath,
                                                           ErrorCode& error)
{
    return HttpClient::DownloadFileByArkiv(fileId, version, localPath, error);
}

std::future<PromiseData> IFileManager::UploadFile(const std::wstring& path, std::wstring fileName, std::wstring filePath, ErrorCode& error)
{
    return HttpClient::uploadFile(error, path, std::move(fileName), std::move(filePath), false);
}

std::future<PromiseData> IFileManager::UploadFileByArkiv(const std::wstring& path, std::wstring fileName, std::wstring filePath,
                                                         const std::wstring& targetFolderId, ErrorCode& error)
{
    return HttpClient::uploadFileByArkiv(error, path, targetFolderId, std::move(fileName), std::move(filePath), false);
}

bool IFileManager::CreateFileDatasetRelationship(const std::string& datasetId, int datasetVersion, const std::string& dwgId, int dwgVersion,
                                                 ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IFileManager::CreateFileDatasetRelationship")).run(error, [&] {
        return retried(&OrloWebService::CreateFileDatasetRelationship, error, datasetId, datasetVersion, dwgId, dwgVersion);
    });
}

bool IFileManager::QueryFileRelatedDatasets(const std::string& dwgId, int dwgVersion, std::vector<RelatedDatasetInfo>& out,
                                            ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::IFileManager::QueryFileRelatedDatasets")).run(error, [&] {
        const auto found = fetched(&OrloWebService::QueryFileRelatedDatasets, error, dwgId, dwgVersion);
        if (!found)
            return false;
        out.insert(out.end(), found->begin(), found->end());
        return true;
    });
}

bool OrloWebService::DeleteFileByFileId(ErrorCode& error, const std::wstring& projectId, const std::wstring& fileId)
{
    return CallFrame(ORLO_HERE("orlo::OrloWebService::DeleteFileByFileId")).runDirect(error, [&] {
        return DeleteFileOfProject(error, projectId, fileId);
    });
}

} // namespace orlo
