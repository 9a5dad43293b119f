#include "TeamReaders.h"

#include "../Call/TextTable.h"

#include <BaseCommon/NeverDestroyed.h>

namespace orlo::OrloPayloadProcessor {

namespace {

void readTeamStatus(const web::json::value& json, CollaborationTeamInfo& team)
{
    static const auto& table = utils::neverDestroyed(new const TextTable<CollaborationTeamStatus>(
        {{CollaborationTeamStatus::Working, L"Working"}, {CollaborationTeamStatus::Paused, L"Paused"}}, CollaborationTeamStatus::Working));
    if (std::wstring text; readField(json, text))
        team.status = table.valueOf(text);
}

/// The ids of the datasets among the resources.
void readSharedDatasets(const web::json::value& resources, TeamSharedDatasetInfo& shared)
{
    if (!resources.is_array())
        return;
    for (const web::json::value& resource : resources.as_array()) {
        std::wstring type;
        std::wstring id;
        if (readMember(resource, L"type", type) && readMember(resource, L"resourceId", id) && type == L"DataSet")
            shared.datasetIds.push_back(std::move(id));
    }
}

} // namespace

const RecordTable<CollaborationTeamInfo>& teamFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<CollaborationTeamInfo>{
        {L"id", &CollaborationTeamInfo::id},
        {L"projectId", &CollaborationTeamInfo::projectId},
        {L"linkedFolderId", &CollaborationTeamInfo::linkedFolderId},
        {L"name", &CollaborationTeamInfo::name},
        {L"status", readTeamStatus},
        {L"description", &CollaborationTeamInfo::description},
    });
    return table;
}

const RecordTable<TeamSharedFolderInfo>& sharedFolderFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<TeamSharedFolderInfo>{
        {L"resourceId", &TeamSharedFolderInfo::resourceId},
        {L"teamId", &TeamSharedFolderInfo::teamId},
        {L"teamName", &TeamSharedFolderInfo::teamName},
    });
    return table;
}

const RecordTable<TeamSharedDatasetInfo>& sharedDatasetFields()
{
    static const auto& table = utils::neverDestroyed(new const RecordTable<TeamSharedDatasetInfo>{
        {L"teamId", &TeamSharedDatasetInfo::teamId},
        {L"teamName", &TeamSharedDatasetInfo::teamName},
        {L"resources", readSharedDatasets},
    });
    return table;
}

} // namespace orlo::OrloPayloadProcessor
