#pragma once

#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Projects/DatasetVersion.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

bool GetDataSetsByFolder(ErrorCode& error, std::vector<http::ORLOHTTPPayloadDataset>& out, const std::wstring& folderId);
bool GetDatasetInfo(ErrorCode& error, DatasetInfo& out, const std::string& datasetId);
bool GetDatasetInfoByModelingId(ErrorCode& error, DatasetInfo& out, const std::string& modelingId);
bool GetDatasetByStatus(ErrorCode& error, std::vector<http::ORLOHTTPPayloadDataset>& out, const std::wstring& projectId,
                        const std::wstring& status);
/// An id is sent only if the record has one.
bool CreateDataSet(ErrorCode& error, http::ORLOHTTPPayloadDataset& out, const http::ORLOHTTPPayloadDataset& data);

} // namespace OrloWebService
} // namespace orlo
