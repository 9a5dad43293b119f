#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <future>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class OrloCallbackContext;

/// Transfers of files, for callers without an object. Each starts at once and returns a future that becomes ready when the
/// transfer has ended, well or badly; it never holds an exception. Keep the ErrorCode alive until then: it is written once,
/// just before. Every request is retried by the retry policy. Any thread may call these; nothing blocks but the future.
namespace HttpClient {

/// Takes a local file to the platform's store, whole and in one request; it is held in memory meanwhile.
/// path: the file; it must not be empty.   fileName: empty for the file's own name.   filePath: the folder in the store;
/// empty for the default one.   gzip: sends it compressed; the platform stores it decoded.
/// Message: the path in the store, or a JSON object with "remoteFilePath" and what the store told: "fileId",
/// "versionIndex", "length".
/// Failures: 400 "invalid file path", "read file fail", "invalid file content"; a status of the platform; 5555.
/// Requests: two.
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> uploadFile(ErrorCode& error, const std::wstring& path, std::wstring fileName,
                                                                   std::wstring filePath, bool gzip);

/// The same into a folder of the document store.
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> uploadFileByArkiv(ErrorCode& error, const std::wstring& path,
                                                                          const std::wstring& targetFolderId, std::wstring fileName,
                                                                          std::wstring filePath, bool gzip);

/// The same for a file that is to become a module. resourceType: as the module service names it.   fileName: the module's name.
/// md5: the sum of the file's bytes, 32 hexadecimal digits.
/// Message: a JSON object with "fileKey" and "url", which the module is registered with.
/// Failures: as above; 400 "param is empty" with 0xE8000005 for an empty text.
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> uploadModule(ErrorCode& error, const std::wstring& spaceType,
                                                                     const std::wstring& spaceTypeParameter,
                                                                     const std::wstring& resourceType, const std::wstring& localPath,
                                                                     const std::wstring& fileName, const std::wstring& md5, bool gzip);

/// Brings one file to the local disk, through memory. The file appears under its name only when it is whole.
/// remotePath: not empty.   localPath: empty for a new file in the temporary folder.
/// Message: the local path. A remote file without content fails with status 200 and makes no file.
/// Failures: 400 "invalid remote uri path", "invalid file path"; a status of the platform; 5555.   Requests: two.
ORLO_PROJECT_API std::future<PromiseData> downloadFile(const std::wstring& remotePath, const std::wstring& localPath, ErrorCode& error);

/// The same for a version of a file in the document store.   Failures: as above, with "invalid fileId".
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> DownloadFileByArkiv(const std::wstring& fileId, int version,
                                                                            const std::wstring& localPath, ErrorCode& error);

/// The same for a module. requestBody: the JSON text that names the module's file; not empty.
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> downloadModuleFile(const std::wstring& requestBody, const std::wstring& localPath,
                                                                           const std::wstring& resourceType, const std::wstring& spaceType,
                                                                           const std::wstring& spaceTypeParameter, ErrorCode& error);

/// Brings files of a dataset into the local cache, at most six at a time, streamed to disk. Each file appears under its
/// name only when it is whole.
/// folder: below the dataset's cache folder.   seeds: names of the files; not empty.
/// callerContext: its handler is told the end with the step key "BatchDownloadAction", and every failure; may be null.
/// Message: "success to batch download files". The first failure settles the future and the ErrorCode, but doesn't end the
/// batch: files already brought stay, those under way go on, and each that ends well starts a further one. They still arrive,
/// and the handler may still be told of failures, when the future is ready.
/// A file that can't be moved to its place is logged; it fails the batch unless it is the last to end.
/// The future never becomes ready if the platform answers with no entry at all: wait with a time-out where that matters.
/// Begun in a CallScope, it becomes ready when that is cancelled, and the ErrorCode stays as it is.
/// Requests: one, and one for each file.
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> downloadBatchFiles(ErrorCode& error, const std::string& folder,
                                                                           const std::string& datasetId,
                                                                           const std::vector<std::string>& seeds,
                                                                           std::shared_ptr<OrloCallbackContext> callerContext);

} // namespace HttpClient

} // namespace orlo
