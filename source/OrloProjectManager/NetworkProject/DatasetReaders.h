#pragma once

#include "FieldReaders.h"

#include <OrloProjectManager/Projects/DatasetRecords.h>

namespace orlo {

/// From the text of a dataset's type; the comparison is exact.
DatasetKind datasetKindOf(const std::wstring& type);

DatasetInfo toDatasetInfo(const http::ORLOHTTPPayloadDataset& record);

namespace OrloPayloadProcessor {

const RecordTable<DatasetInfo>& datasetInfoFields();
const RecordTable<http::ORLOHTTPPayloadDataset>& datasetFields();

} // namespace OrloPayloadProcessor
} // namespace orlo
