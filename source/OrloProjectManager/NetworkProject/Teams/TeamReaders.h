#pragma once

#include "../Call/FieldReaders.h"

#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

namespace orlo::OrloPayloadProcessor {

const RecordTable<CollaborationTeamInfo>& teamFields();

} // namespace orlo::OrloPayloadProcessor
