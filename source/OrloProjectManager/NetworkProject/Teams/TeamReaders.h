#pragma once

#include "../Call/FieldReaders.h"

#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>

namespace orlo::OrloPayloadProcessor {

const RecordTable<CollaborationTeamInfo>& teamFields();
const RecordTable<TeamSharedFolderInfo>& sharedFolderFields();
const RecordTable<TeamSharedDatasetInfo>& sharedDatasetFields();

} // namespace orlo::OrloPayloadProcessor
