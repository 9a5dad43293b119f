#include "CollaborationTeamManager.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Teams/TeamWeb.h"
#include "CollaborationTeam.h"

#include <BaseCommon/NeverDestroyed.h>
#include <OrloNetwork/WebRequest.h>
#include <OrloProjectManager/Projects/ICollaborationProjectManager.h>

#include <utility>

namespace orlo {

using TeamPtr = ICollaborationTeamManager::Team;

ICollaborationTeamManager::ICollaborationTeamManager() = default;
ICollaborationTeamManager::~ICollaborationTeamManager() = default;

ICollaborationTeamManager* ICollaborationTeamManager::Get()
{
    static auto& manager = utils::neverDestroyed(new CollaborationTeamManager);
    return &manager;
}

TeamPtr CollaborationTeamManager::CreateTeam(const std::wstring& name, const std::wstring& projectId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeamManager::CreateTeam")).run(error, [&]() -> TeamPtr {
        return std::make_shared<CollaborationTeam>(retried(&OrloWebService::CreateTeam, error, name, projectId));
    });
}

TeamPtr CollaborationTeamManager::GetTeam(const std::wstring& teamId)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeamManager::GetTeam")).runAlone([&](ErrorCode&) -> TeamPtr {
        return std::make_shared<CollaborationTeam>(teamId);
    });
}

TeamPtr CollaborationTeamManager::GetTeamByFolder(const std::wstring& folderId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeamManager::GetTeamByFolder")).run(error, [&] {
        return GetTeam(HttpClient::getTeamIdByFolderId(folderId, error));
    });
}

TeamPtr CollaborationTeamManager::GetTeamByDataset(const std::string& datasetId, ErrorCode& error)
{
    // Intended: the frame looks at an ErrorCode of its own, and writes that; the request alone writes the caller's.
    return CallFrame(ORLO_HERE("orlo::CollaborationTeamManager::GetTeamByDataset")).runAlone([&](ErrorCode&) {
        return GetTeam(ICollaborationProjectManager::Get()->GetDatasetInfo(datasetId, error).teamId);
    });
}

std::vector<TeamPtr> CollaborationTeamManager::GetMyTeamsByProject(const std::wstring& projectId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::CollaborationTeamManager::GetMyTeamsByProject")).runDirect(error, [&] {
        const auto user = OrloWebService::GetCurrentUserInfo();
        std::vector<std::wstring> ids;
        OrloWebService::GetTeamsOfUser(error, ids, user ? user->getAccountId() : std::wstring(), projectId);
        std::vector<TeamPtr> teams;
        teams.reserve(ids.size());
        for (const std::wstring& id : ids)
            teams.push_back(GetTeam(id));
        return teams;
    });
}

std::wstring HttpClient::createTeam(const std::wstring& name, const std::wstring& projectId)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::createTeam")).runAlone([&](ErrorCode& error) {
        return retried(&OrloWebService::CreateTeam, error, name, projectId);
    });
}

bool HttpClient::getTeamInfosInProject(const std::wstring& projectId, std::vector<CollaborationTeamInfo>& out)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::getTeamInfosInProject")).runAlone([&](ErrorCode& error) {
        const auto before = std::exchange(out, {}); // one of these may hold the id
        return retried(&OrloWebService::GetTeamsInProject, error, out, projectId);
    });
}

bool HttpClient::addUserToTeam(const std::wstring& teamId, const std::wstring& userId)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::addUserToTeam")).runAlone([&](ErrorCode& error) {
        return retried(&OrloWebService::AddUserToTeam, error, teamId, userId);
    });
}

bool HttpClient::deleteUserFromTeam(const std::wstring& teamId, const std::wstring& userId)
{
    // Intended: unlike its twin it isn't retried.
    return CallFrame(ORLO_HERE("orlo::HttpClient::deleteUserFromTeam")).runDirectAlone([&](ErrorCode& error) {
        return OrloWebService::DeleteUserFromTeam(error, teamId, userId);
    });
}

std::wstring HttpClient::getTeamIdByFolderId(const std::wstring& folderId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::getTeamIdByFolderId")).run(error, [&] {
        std::wstring id;
        if (!retried(&OrloWebService::getTeamIdByFolderId, error, id, folderId))
            log::error(L"HttpClient::getTeamIdByFolderId OrloWebService::getTeamIdByFolderId error");
        return id;
    });
}

} // namespace orlo
