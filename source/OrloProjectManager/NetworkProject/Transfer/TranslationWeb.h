#pragma once

#include <string>

namespace orlo {

class ErrorCode;

namespace OrloWebService {

/// Has a version of a dataset translated. Refused only if the id is empty and the version negative, both together.
bool TriggerSightlineTranslateWorkerByUploadJob(ErrorCode& error, const std::string& dsId, int dsVersion, const std::wstring& toType);

} // namespace OrloWebService
} // namespace orlo
