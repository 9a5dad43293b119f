#pragma once

#include <BaseCommon/IOrloBridge.h>
#include <OrloProjectManager/Projects/DatasetVersion.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

/// A version of a dataset, with the marks that tell an untold number from 0.
struct VersionOfFile
{
    VersionOfFile();

    http::ORLOHTTPPayloadDatasetVersion record; ///< version, size: -1 where they aren't told
    int documentVersion = -1;                   ///< of a file in the document store, which counts for itself; -1: not told
};

namespace OrloWebService {

/// A version whose content is the record's `dataSetSourceFile`.
bool CreateVersion(ErrorCode& error, http::ORLOHTTPPayloadDatasetVersion& out, const http::ORLOHTTPPayloadDatasetVersion& data);
/// The same for a file of the document store; `size` and `version` of the record go along.
bool CreateDocVersion(ErrorCode& error, http::ORLOHTTPPayloadDatasetVersion& out, const http::ORLOHTTPPayloadDatasetVersion& data);
/// published: true for "Published", false for "WIP".
bool CreateVersionByNumber(ErrorCode& error, const std::wstring& datasetId, int versionNum, const std::wstring& metaInfo, bool published,
                           const std::wstring& description);
/// version: below 0 for the latest.   mvd: "base" is sent where it is empty.
bool GetDatasetVersionByMvd(ErrorCode& error, http::ORLOHTTPPayloadDatasetVersion& out, const std::string& datasetId, int version,
                            const std::wstring& mvd);
/// The same request for the sake of the version's file, in silence: a number that a dataset has skipped is no failure there.
bool GetVersionOfFile(ErrorCode& error, VersionOfFile& out, const std::string& datasetId, int version);
bool GetDatasetVersionAccordingMVD(ErrorCode& error, std::vector<http::ORLOHTTPPayloadDatasetVersion>& out,
                                   const std::vector<int>& versionIds, const std::string& mvd);
/// The platform's own answer, true or false.
bool MarkPublish(ErrorCode& error, const std::string& datasetId, const std::wstring& version, const std::wstring& description);

/// What a version remembers under a key: the platform's whole answer as text. Empty on failure.
std::wstring GetDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& versionId);
bool UpsertDatasetMeta(ErrorCode& error, DatasetMetaKey key, const std::wstring& value, const std::wstring& versionId);

} // namespace OrloWebService
} // namespace orlo
