#pragma once

#include <OrloProjectManager/Transfer/PromiseData.h>

#include <future>
#include <string>

namespace orlo {

class ErrorCode;

/// Brings the template of a dataset into the local folder of templates, unless it is there.
std::future<PromiseData> downloadTemplateFile(const std::wstring& datasetId, const std::wstring& projectId, ErrorCode& error);

} // namespace orlo
