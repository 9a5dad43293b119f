#pragma once

#include "UploadJobEntity.h"

#include <OrloLogging/Log.h>

#include <functional>
#include <memory>
#include <string>

namespace orlo {

/// Makes a job of the private copy that it is handed.
using JobOfCopy = std::function<std::shared_ptr<UploadJobEntity>(const std::wstring& copy)>;

/// Copies a file, saves the job that is made of the copy, and hands it to the job manager. A job that can't be saved is not accepted; one
/// that is saved stays so where there is no job manager.
/// site: whose log lines these are.   copyName: empty for the file's own name.
bool submitJob(const CallSite& site, const std::wstring& path, const std::string& projectId, const std::wstring& copyName,
               const JobOfCopy& makeJob);

} // namespace orlo
