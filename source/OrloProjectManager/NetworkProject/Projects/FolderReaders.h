#pragma once

#include "../Call/FieldReaders.h"

#include <OrloProjectManager/Projects/FolderRecords.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

namespace orlo::OrloPayloadProcessor {

const RecordTable<http::ORLOHTTPPayloadFolder>& folderFields();
const RecordTable<CollaborationTeamInfo>& teamFields();

} // namespace orlo::OrloPayloadProcessor
