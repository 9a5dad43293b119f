#pragma once

#include <OrloProjectManager/Projects/DatasetRecords.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

bool GetDataSetsByFolder(ErrorCode& error, std::vector<http::ORLOHTTPPayloadDataset>& out, const std::wstring& folderId);
bool GetDatasetInfo(ErrorCode& error, DatasetInfo& out, const std::string& datasetId);
bool GetDatasetInfoByModelingId(ErrorCode& error, DatasetInfo& out, const std::string& modelingId);

} // namespace OrloWebService
} // namespace orlo
