#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <cstdint>
#include <future>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// A dataset that a drawing file is bound to.
struct RelatedDatasetInfo
{
    std::wstring datasetId;
    std::wstring datasetName;
    std::int32_t datasetVersion = 0;
    std::wstring displayVersion;
    std::int32_t reserved = 0; ///< set by no answer of the platform
};

/// Transfers of files, and the bindings between drawing files and datasets. All operations are static; any thread.
class ORLO_PROJECT_API IFileManager
{
public:
    /// The one manager of the process; never null, owned by the library.
    static IFileManager* Get();

    IFileManager();
    virtual ~IFileManager();

    IFileManager(const IFileManager&) = delete;
    IFileManager& operator=(const IFileManager&) = delete;

    /// The local path of a file of a dataset. A file that is in the local cache is trusted as it stands and given without
    /// a request; another is downloaded first.
    /// uri: "<folder>/<rest>?f=<more>", with the platform's path separator.
    /// Returns: a path at which the file stands; empty on failure, which the log tells.   Requests: none, or two, retried.
    /// Blocks the caller.
    static std::wstring DownloadFile(const std::string& dsId, const std::wstring& uri, ErrorCode& error);

    /// As HttpClient::downloadFile.
    [[nodiscard]] static std::future<PromiseData> DownloadFile(const std::wstring& remotePath, const std::wstring& localPath,
                                                               ErrorCode& error);

    /// As HttpClient::DownloadFileByArkiv; the first form asks for version 1.
    [[nodiscard]] static std::future<PromiseData> DownloadFileByArkiv(const std::wstring& fileId, const std::wstring& localPath,
                                                                      ErrorCode& error);
    [[nodiscard]] static std::future<PromiseData> DownloadFileByArkiv(const std::wstring& fileId, int version,
                                                                      const std::wstring& localPath, ErrorCode& error);

    /// As HttpClient::uploadFile and HttpClient::uploadFileByArkiv, never compressed.
    [[nodiscard]] static std::future<PromiseData> UploadFile(const std::wstring& path, std::wstring fileName, std::wstring filePath,
                                                             ErrorCode& error);
    [[nodiscard]] static std::future<PromiseData> UploadFileByArkiv(const std::wstring& path, std::wstring fileName, std::wstring filePath,
                                                                    const std::wstring& targetFolderId, ErrorCode& error);

    /// Binds a version of a drawing file to a version of a dataset.   Requests: one, retried.   Blocks the caller.
    static bool CreateFileDatasetRelationship(const std::string& datasetId, int datasetVersion, const std::string& dwgId, int dwgVersion,
                                              ErrorCode& error);

    /// Appends the datasets that a drawing file is bound to, the main one last.   Requests: one, retried.   Blocks the caller.
    static bool QueryFileRelatedDatasets(const std::string& dwgId, int dwgVersion, std::vector<RelatedDatasetInfo>& out, ErrorCode& error);
};

namespace OrloWebService {

/// Deletes a file of a project.
/// Errors: 0xE8000005 an id is empty, nothing is sent; 0xE8000002 transport or exception; a negative value for an error
/// status.   Requests: one, not retried.   Threads: any; blocks the caller.
ORLO_PROJECT_API bool DeleteFileByFileId(ErrorCode& error, const std::wstring& projectId, const std::wstring& fileId);

} // namespace OrloWebService

} // namespace orlo
