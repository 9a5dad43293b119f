#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <cstdint>
#include <future>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// A version of a dataset, with what the platform tells of its file.
struct DatasetFileVersion
{
    int number = 0; ///< counts in its dataset
    int id = 0;     ///< of the version in the platform
    std::wstring displayVersion;
    std::wstring status; ///< "WIP", "Published", or what else the platform has
    std::wstring creationTime;
    /// A path in the plain store, or the id of a file in the document store, which holds no "/"; empty for a version without a file.
    std::wstring sourceFile;
    std::int64_t size = -1; ///< bytes; -1 where the platform doesn't tell
};

/// The way back of files that became versions of datasets, through either store.
namespace DatasetFiles {

/// How many numbers the short form of `listVersions` asks for.
constexpr int usualRequests = 100;

/// The versions of a dataset, the newest first. The platform has no list of them: it is asked for the latest one that is good, then for
/// each number below it, down to 1. Numbers that it doesn't know are left out.
/// datasetId: opaque id, not empty.   newest: the number to begin with; below 0 for the latest.
/// atMost: numbers to ask for, above 0; to go on, begin with the first number that wasn't asked for.
/// Returns: empty on failure, and where there is no version: the `ErrorCode` then holds the platform's 404.
/// Errors: 0xE8000005 no dataset id; 0xE8000001 bad input or unusable answer; 0xE8000002 transport or exception; a negative value for an
/// error status.   Requests: one for each number, each retried.   Threads: any; blocks the caller.
[[nodiscard]] ORLO_PROJECT_API std::vector<DatasetFileVersion> listVersions(const std::string& datasetId, int newest, int atMost,
                                                                            ErrorCode& error);
/// The same from the latest on, with `usualRequests`.
[[nodiscard]] ORLO_PROJECT_API std::vector<DatasetFileVersion> listVersions(const std::string& datasetId, ErrorCode& error);

/// Brings the file of a version to the local disk, streamed. What has arrived is compared with what the platform tells before the file
/// gets its name: the bytes with the size in the version's record, and their MD5 with the one that the store sends along
/// ("Content-MD5", of an answer that isn't compressed). On failure nothing is left, and a file that had the name is as it was.
/// The file of a document store has versions of its own. Where the record doesn't tell which one it is ("versionIndex"), it is taken to
/// be that of the dataset's number; a record that tells no size either is refused then.
/// datasetId: not empty.   version: below 0 for the latest one that is good.   localPath: in a folder that exists; empty for a new file
/// in the temporary folder. A file that is there is replaced.
/// Message: the local path, or the reason; the `ErrorCode` tells the reason too.
/// Failures: 400 with 0xE8000005 for no dataset id, with 0xE8000001 "invalid file path"; a status of the platform; 5555, with 0xE8000001
/// where the size or the sum is another, where the version has no file, and for an answer that can't be used.
/// Requests: three, each retried.   Threads: any; nothing blocks but the future. Keep the ErrorCode alive until it is ready.
[[nodiscard]] ORLO_PROJECT_API std::future<PromiseData> downloadVersion(const std::string& datasetId, int version,
                                                                        const std::wstring& localPath, ErrorCode& error);

} // namespace DatasetFiles

} // namespace orlo
