#include "CollaborationTeam.h"

#include "../Frame/Unavailable.h"

#include <utility>

namespace orlo {

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
    return unavailable<std::vector<std::shared_ptr<ICollaborationSharedRecord>>>(error);
}

std::vector<TeamSharedFolderInfo> CollaborationTeam::GetTeamSharedFolders(ErrorCode& error)
{
    return unavailable<std::vector<TeamSharedFolderInfo>>(error);
}

std::vector<TeamSharedDatasetInfo> CollaborationTeam::GetTeamSharedDatasets(ErrorCode& error)
{
    return unavailable<std::vector<TeamSharedDatasetInfo>>(error);
}

std::vector<DatasetInfo> CollaborationTeam::GetTeamDatasetInfos(DatasetStatus, ErrorCode& error)
{
    return unavailable<std::vector<DatasetInfo>>(error);
}

bool CollaborationTeam::GetUserOwnsDatasetsInTeam(const DatasetStatus&, std::vector<DatasetInfo>&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

CollaborationTeamInfo CollaborationTeam::GetTeamInfo(ErrorCode& error)
{
    return unavailable<CollaborationTeamInfo>(error);
}

bool CollaborationTeam::AddMember(const std::wstring&, ErrorCode& error)
{
    return unavailable<bool>(error);
}

} // namespace orlo
