#pragma once

#include "../Call/FieldReaders.h"

#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Projects/DatasetVersion.h>

namespace orlo {

/// From the text of a dataset's type; the comparison is exact.
DatasetKind datasetKindOf(const std::wstring& type);

DatasetInfo toDatasetInfo(const http::ORLOHTTPPayloadDataset& record);

namespace OrloPayloadProcessor {

const RecordTable<DatasetInfo>& datasetInfoFields();
const RecordTable<http::ORLOHTTPPayloadDataset>& datasetFields();
const RecordTable<http::ORLOHTTPPayloadDatasetVersion>& datasetVersionFields();

/// Reads the object under "data" where there is one, otherwise the value itself.
void readDatasetVersion(const web::json::value& value, http::ORLOHTTPPayloadDatasetVersion& version);

} // namespace OrloPayloadProcessor
} // namespace orlo
