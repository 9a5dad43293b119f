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

} // namespace orlo::OrloPayloadProcessor
