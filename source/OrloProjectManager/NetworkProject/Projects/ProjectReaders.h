#pragma once

#include "../Call/FieldReaders.h"

#include <OrloProjectManager/Projects/ProjectRecords.h>
#include <OrloProjectManager/Projects/Specialty.h>

namespace orlo::OrloPayloadProcessor {

const RecordTable<http::ORLOHTTPPayloadProject>& projectFields();
const RecordTable<http::ORLOProjectStandardProperty>& standardPropertyFields();
const RecordTable<http::ORLOHTTPPayloadSpecialty>& specialtyFields();

} // namespace orlo::OrloPayloadProcessor
