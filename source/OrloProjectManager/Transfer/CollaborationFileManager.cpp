#include "CollaborationFileManager.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/DatasetWeb.h"
#include "../NetworkProject/Projects/VersionWeb.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo {

using http::ORLOHTTPPayloadDataset;
using http::ORLOHTTPPayloadDatasetVersion;
using FilePtr = std::shared_ptr<ICollaborationFile>;

namespace {

FilePtr failed(const wchar_t* words)
{
    log::error(words);
    return nullptr;
}

/// A dataset that is a file: named as the file is, and of the type that its extension says.
ORLOHTTPPayloadDataset datasetOf(const std::wstring& folderId, const std::wstring& path)
{
    ORLOHTTPPayloadDataset dataset;
    dataset.folderId = folderId;
    dataset.name = FilePath(path).GetFileName();
    const std::wstring extension = FilePath(path).GetExtension();
    dataset.type = extension.empty() ? extension : extension.substr(1);
    return dataset;
}

using VersionFunction = bool (*)(ErrorCode&, ORLOHTTPPayloadDatasetVersion&, const ORLOHTTPPayloadDatasetVersion&);

/// The words say UploadFile for updates too.
FilePtr createVersion(VersionFunction create, const ORLOHTTPPayloadDatasetVersion& data, ErrorCode& error)
{
    const auto version = fetched(create, error, data);
    if (!version)
        return failed(L"CollaborationFileManager::UploadFile OrloWebService::CreateVersion error.");
    return std::make_shared<CollaborationFile>(data.dataSetId, *version);
}

/// A dataset and its first version. A dataset whose version fails stays without one.   datasetId: where there is such a one already.
FilePtr createDataset(VersionFunction create, const ORLOHTTPPayloadDataset& wanted, ORLOHTTPPayloadDatasetVersion data,
                      std::string& datasetId, ErrorCode& error)
{
    if (datasetId.empty()) {
        const auto created = fetched(&OrloWebService::CreateDataSet, error, wanted);
        if (!created)
            return failed(L"CollaborationFileManager::UploadFile OrloWebService::CreateDataSet error.");
        datasetId = created->id;
    }
    data.dataSetId = datasetId;
    return createVersion(create, data, error);
}

/// Why the bytes of a file didn't arrive: a file that can't be read leaves the reason in the outcome alone.
ErrorCode failureOf(const PromiseData& uploaded, const ErrorCode& error)
{
    if (uploaded.success || !error.isClear())
        return uploaded.success ? ErrorCode() : error;
    return {error::exception, makeHttpError(L"HttpError", uploaded.message, uploaded.status, 0)};
}

PromiseData uploadedBytes(const std::wstring& folderId, const std::wstring& path, DocumentUpload& upload, ErrorCode& error)
{
    PromiseData uploaded = IFileManager::UploadFileByArkiv(path, L"", L"", folderId, error).get();
    upload.failure = failureOf(uploaded, error);
    return uploaded;
}

/// The outcome isn't tested: a failed upload goes on with its words as the source file, which the platform refuses.
ORLOHTTPPayloadDatasetVersion uploadedVersion(const std::wstring& path, ErrorCode& error)
{
    ORLOHTTPPayloadDatasetVersion data;
    data.dataSetSourceFile = IFileManager::UploadFile(path, L"", L"", error).get().message;
    return data;
}

} // namespace

ORLOHTTPPayloadDatasetVersion documentVersion(const std::wstring& message)
{
    ORLOHTTPPayloadDatasetVersion data;
    data.version = -1;
    JsonWrapper told;
    if (!told.Parse(utils::toString(message)))
        return data;
    long long length = 0;
    std::string fileId;
    told.Get("versionIndex", data.version);
    told.Get("length", length);
    told.Get("fileId", fileId);
    data.size = length;
    data.dataSetSourceFile = utils::toWstring(fileId);
    return data;
}

ICollaborationFile::ICollaborationFile() = default;
ICollaborationFile::~ICollaborationFile() = default;

ICollaborationFileManager::ICollaborationFileManager() = default;
ICollaborationFileManager::~ICollaborationFileManager() = default;

ICollaborationFileManager* ICollaborationFileManager::Get()
{
    static auto& manager = utils::neverDestroyed(new CollaborationFileManager);
    return &manager;
}

CollaborationFile::CollaborationFile(std::string datasetId, ORLOHTTPPayloadDatasetVersion version)
    : m_datasetId(std::move(datasetId)), m_version(std::move(version))
{}

FilePtr CollaborationFileManager::UploadFile(const std::wstring& folderId, const std::wstring& path, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationFileManager::UploadFile")).run(error, [&] {
        const ORLOHTTPPayloadDatasetVersion data = uploadedVersion(path, error);
        std::string datasetId;
        return createDataset(&OrloWebService::CreateVersion, datasetOf(folderId, path), data, datasetId, error);
    });
}

FilePtr CollaborationFileManager::UpdateFile(const std::string& dsId, const std::wstring& path, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationFileManager::UpdateFile")).run(error, [&]() -> FilePtr {
        if (dsId.empty())
            return nullptr;
        ORLOHTTPPayloadDatasetVersion data = uploadedVersion(path, error);
        data.dataSetId = dsId;
        return createVersion(&OrloWebService::CreateVersion, data, error);
    });
}

FilePtr CollaborationFileManager::UploadFileByArkiv(const std::wstring& folderId, const std::wstring& path, ErrorCode& error)
{
    DocumentUpload upload;
    return UploadFileByArkiv(folderId, path, upload, error);
}

FilePtr CollaborationFileManager::UploadFileByArkiv(const std::wstring& folderId, const std::wstring& path, DocumentUpload& upload,
                                                    ErrorCode& error)
{
    constexpr const wchar_t* uploadFailed = L"CollaborationFileManager::UploadFileByArkiv 上传文件失败";
    return CallFrame(ORLO_HERE("orlo::CollaborationFileManager::UploadFileByArkiv")).run(error, [&]() -> FilePtr {
        const PromiseData uploaded = uploadedBytes(folderId, path, upload, error);
        if (!uploaded.success)
            return failed(uploadFailed);
        const ORLOHTTPPayloadDatasetVersion data = documentVersion(uploaded.message);
        if (data.dataSetSourceFile.empty() || data.size < 0)
            return failed(uploadFailed);
        return createDataset(&OrloWebService::CreateDocVersion, datasetOf(folderId, path), data, upload.datasetId, error);
    });
}

FilePtr CollaborationFileManager::UpdateFileByArkiv(const std::string& dsId, const std::wstring& folderId, const std::wstring& path,
                                                    ErrorCode& error)
{
    DocumentUpload upload;
    return UpdateFileByArkiv(dsId, folderId, path, upload, error);
}

FilePtr CollaborationFileManager::UpdateFileByArkiv(const std::string& dsId, const std::wstring& folderId, const std::wstring& path,
                                                    DocumentUpload& upload, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationFileManager::UpdateFileByArkiv")).run(error, [&] {
        // Neither the outcome nor the keys are tested: a failed upload ends in a version that the platform refuses.
        ORLOHTTPPayloadDatasetVersion data = documentVersion(uploadedBytes(folderId, path, upload, error).message);
        data.dataSetId = dsId;
        return createVersion(&OrloWebService::CreateDocVersion, data, error);
    });
}

} // namespace orlo
