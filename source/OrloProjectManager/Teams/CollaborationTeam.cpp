#include "CollaborationTeam.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/ProjectTexts.h"
#include "../NetworkProject/Teams/TeamWeb.h"
#include "CollaborationSharedRecord.h"

#include <utility>

namespace orlo {

namespace {

/// Intended: among a user's own datasets Any reads as Draft; among those of a team it lifts the filter.
std::wstring statusOfOwn(DatasetStatus status)
{
    return datasetStatusTexts().textOf(status == DatasetStatus::Any ? DatasetStatus::Draft : status);
}

} // namespace

ICollaborationTeam::ICollaborationTeam() = default;
ICollaborationTeam::~ICollaborationTeam() = default;

CollaborationTeam::CollaborationTeam(std::wstring id) : teamId(std::move(id))
{}

std::wstring CollaborationTeam::GetTeamId() const
{
    return teamId;
}

std::vector<std::shared_ptr<ICollaborationSharedRecord>> CollaborationTeam::GetCollaborationSharedRecords(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::GetCollaborationSharedRecords")).run(error, [&] {
        std::vector<std::shared_ptr<ICollaborationSharedRecord>> records;
        for (const auto& record : HttpClient::getShareRecordByTeamId(teamId, error))
            records.push_back(std::make_shared<CollaborationSharedRecord>(
                record->getId(), shareStatusOf(record->getStatus()), record->getName(), record->getShareId(), record->getConsumedId()));
        return records;
    });
}

std::vector<TeamSharedFolderInfo> CollaborationTeam::GetTeamSharedFolders(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::GetTeamSharedFolders")).runDirect(error, [&] {
        std::vector<TeamSharedFolderInfo> folders;
        OrloWebService::GetFoldersSharedWithTeam(error, folders, teamId);
        return folders;
    });
}

std::vector<TeamSharedDatasetInfo> CollaborationTeam::GetTeamSharedDatasets(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::GetTeamSharedDatasets")).runDirect(error, [&] {
        std::vector<TeamSharedDatasetInfo> datasets;
        OrloWebService::GetDatasetsSharedWithTeam(error, datasets, teamId);
        return datasets;
    });
}

std::vector<DatasetInfo> CollaborationTeam::GetTeamDatasetInfos(DatasetStatus status, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::GetTeamDatasetInfos")).runDirect(error, [&] {
        std::optional<std::wstring> text;
        if (status != DatasetStatus::Any)
            text = datasetStatusTexts().textOf(status);
        std::vector<DatasetInfo> datasets;
        OrloWebService::GetDatasetsOfTeam(error, datasets, teamId, text);
        return datasets;
    });
}

bool CollaborationTeam::GetUserOwnsDatasetsInTeam(const DatasetStatus& status, std::vector<DatasetInfo>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::GetUserOwnsDatasetsInTeam")).runDirect(error, [&] {
        return !teamId.empty() && OrloWebService::SearchOwnDatasets(error, out, {teamId}, statusOfOwn(status));
    });
}

bool ICollaborationTeam::GetUserOwnsDatasetsInTeams(const std::vector<std::wstring>& teamIds, const DatasetStatus& status,
                                                    std::vector<DatasetInfo>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ICollaborationTeam::GetUserOwnsDatasetsInTeams")).runDirect(error, [&] {
        return !teamIds.empty() && OrloWebService::SearchOwnDatasets(error, out, teamIds, statusOfOwn(status));
    });
}

bool ICollaborationTeam::GetUserOwnsDatasetsInTeams(const std::vector<std::wstring>& teamIds, const DatasetStatus& status,
                                                    std::vector<DatasetInfo>& out)
{
    return GetUserOwnsDatasetsInTeams(teamIds, status, out, DroppedError());
}

CollaborationTeamInfo CollaborationTeam::GetTeamInfo(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::GetTeamInfo")).runDirect(error, [&] {
        CollaborationTeamInfo info;
        OrloWebService::GetTeamInfo(error, info, teamId);
        return info;
    });
}

bool CollaborationTeam::AddMember(const std::wstring& userId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeam::AddMember")).run(error, [&] {
        return retried(&OrloWebService::AddUserToTeam, error, teamId, userId);
    });
}

} // namespace orlo
