#pragma once

#include <OrloProjectManager/Export.h>

#include <string>

namespace orlo {

class ErrorCode;

/// A dataset as a unit of work.
class ORLO_PROJECT_API IWorkUnit
{
public:
    /// Marks a version of a dataset as published.
    /// Returns: what the platform answers; false on failure.
    /// Errors: 0xE8000002 transport or exception; a negative value for an error status.
    /// Requests: one, retried.   Threads: any; blocks the caller.
    static bool MarkPublish(const std::string& datasetId, int version, const std::wstring& description, ErrorCode& error);
};

} // namespace orlo
