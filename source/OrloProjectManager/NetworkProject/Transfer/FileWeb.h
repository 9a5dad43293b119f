#pragma once

#include <OrloProjectManager/Transfer/IFileManager.h>

namespace orlo::OrloWebService {

bool CreateFileDatasetRelationship(ErrorCode& error, const std::string& datasetId, int datasetVersion, const std::string& dwgId,
                                   int dwgVersion);
/// The bound datasets in order, then the main one if there is one.
bool QueryFileRelatedDatasets(ErrorCode& error, std::vector<RelatedDatasetInfo>& out, const std::string& dwgId, int dwgVersion);
/// What `DeleteFileByFileId` of the face sends.
bool DeleteFileOfProject(ErrorCode& error, const std::wstring& projectId, const std::wstring& fileId);

} // namespace orlo::OrloWebService
