#pragma once

#include "../Call/FieldReaders.h"

#include <OrloProjectManager/Projects/FolderRecords.h>

namespace orlo::OrloPayloadProcessor {

const RecordTable<http::ORLOHTTPPayloadFolder>& folderFields();

} // namespace orlo::OrloPayloadProcessor
