#include "FolderReaders.h"

#include "../Call/TextTable.h"

namespace orlo::OrloPayloadProcessor {

using http::ORLOHTTPPayloadFolder;

namespace {

void readTeamStatus(const web::json::value& json, CollaborationTeamInfo& team)
{
    static const auto& table = *new const TextTable<CollaborationTeamStatus>(
        {{CollaborationTeamStatus::Working, L"Working"}, {CollaborationTeamStatus::Paused, L"Paused"}}, CollaborationTeamStatus::Working,
        Unknowns::join);
    if (std::wstring text; readField(json, text))
        team.status = table.valueOf(text);
}

} // namespace

const RecordTable<ORLOHTTPPayloadFolder>& folderFields()
{
    static const auto& table = *new const RecordTable<ORLOHTTPPayloadFolder>{
        {L"id", &ORLOHTTPPayloadFolder::id},
        {L"name", &ORLOHTTPPayloadFolder::name},
        {L"folderType", &ORLOHTTPPayloadFolder::folderType},
        {L"parentId", &ORLOHTTPPayloadFolder::parentId},
        {L"projectId", &ORLOHTTPPayloadFolder::projectId},
        {L"teamId", &ORLOHTTPPayloadFolder::teamId},
    };
    return table;
}

const RecordTable<CollaborationTeamInfo>& teamFields()
{
    static const auto& table = *new const RecordTable<CollaborationTeamInfo>{
        {L"id", &CollaborationTeamInfo::id},
        {L"projectId", &CollaborationTeamInfo::projectId},
        {L"linkedFolderId", &CollaborationTeamInfo::linkedFolderId},
        {L"name", &CollaborationTeamInfo::name},
        {L"status", readTeamStatus},
        {L"description", &CollaborationTeamInfo::description},
    };
    return table;
}

} // namespace orlo::OrloPayloadProcessor
