#pragma once

#include <OrloProjectManager/Projects/ProjectItemConfig.h>

#include <string>
#include <vector>

namespace orlo {

class ErrorCode;

// The building items of a project, their own configurations, and the datasets bound to them. Every form logs as "Project::<Name>".
// What is read is handed over whole or not at all; lists are appended to. A content that can't be read as JSON is refused.
namespace OrloWebService {

/// subItemId: the new item's.
bool AddBuildingItem(ErrorCode& error, std::wstring& subItemId, const std::wstring& projectId, int revision, const std::wstring& content);
bool UpdateBuildingItem(ErrorCode& error, const std::wstring& projectId, int revision, const std::wstring& subItemId,
                        const std::wstring& content);
bool DeleteBuildingItem(ErrorCode& error, const std::wstring& projectId, int revision, const std::wstring& subItemId);
bool GetBuildingItems(ErrorCode& error, std::vector<ProjectItemConfig>& items, const std::wstring& projectId, int revision);
bool GetBuildingItem(ErrorCode& error, ProjectItemConfig& item, const std::wstring& projectId, const std::wstring& subItemId, int version);
bool GetLatestBuildingItem(ErrorCode& error, ProjectItemConfig& item, const std::wstring& projectId, const std::wstring& subItemId);

/// What a project or an item, the binder, has of a type. revision: that of the last element that tells one, 0 where there is no element; -1
/// where none tells one, or on failure.
bool GetLatestConfigByProjectIdAndOwnerId(ErrorCode& error, std::vector<ProjectItemConfig>& items, int* revision,
                                          const std::wstring& bindId, const std::wstring& projectId, ConfigType type);
bool GetProjectItemConfig(ErrorCode& error, ProjectItemConfig& config, const std::wstring& projectId, const std::wstring& subItemId,
                          ConfigType type, int version);
bool CreateProjectItemConfig(ErrorCode& error, const std::wstring& projectId, const std::wstring& subItemId, ConfigType type,
                             const std::wstring& content);
/// Refuses the types of a project itself, and items, which UpdateBuildingItem writes.
bool UpdateProjectItemConfig(ErrorCode& error, const std::wstring& projectId, const std::wstring& subItemId, ConfigType type, int version,
                             const std::wstring& content);

bool AssociateDatasetAndBuildingItem(ErrorCode& error, const std::wstring& projectId, const std::wstring& datasetId,
                                     const std::wstring& subItemId);
bool GetBuildingItemIdsByDatasetId(ErrorCode& error, std::vector<std::wstring>& ids, const std::wstring& projectId,
                                   const std::wstring& datasetId);
bool GetDatasetIdsByBuildingItemId(ErrorCode& error, std::vector<std::wstring>& ids, const std::wstring& projectId,
                                   const std::wstring& subItemId);

} // namespace OrloWebService
} // namespace orlo
