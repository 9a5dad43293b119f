#include "TeamWeb.h"

#include "../Call/Refusal.h"
#include "../Call/WebCall.h"
#include "../Projects/DatasetReaders.h"
#include "TeamReaders.h"

#include <OrloNetwork/WebRequest.h>

namespace orlo::OrloWebService {

using OrloPayloadProcessor::datasetInfoFields;
using OrloPayloadProcessor::sharedDatasetFields;
using OrloPayloadProcessor::sharedFolderFields;
using OrloPayloadProcessor::teamFields;

namespace {

constexpr const wchar_t* newTeamPath = L"/v2/teams";
constexpr const wchar_t* teamsOfProjectPath = L"/projects/{projectId}/teams";
constexpr const wchar_t* memberPath = L"/teams/{teamId}/users/{userId}";
constexpr const wchar_t* teamSearchPath = L"/teams";
constexpr const wchar_t* teamsOfUserPath = L"/users/{userId}/projects/{projectId}/teams";
constexpr const wchar_t* teamPath = L"/teams/{teamId}";
constexpr const wchar_t* datasetsOfTeamPath = L"/teams/{teamId}/dataSets/byStatus";
constexpr const wchar_t* ownDatasetsPath = L"/v2/search/dataSets/byTeams";
constexpr const wchar_t* sharedDatasetsPath = L"/v2/teams/{teamId}/permissionResource";
constexpr const wchar_t* sharedFoldersPath = L"/teams/{teamId}/permissionResource";

WebAnswer sendOfMember(ErrorCode& error, const wchar_t* name, const web::http::method& method, const std::wstring& teamId,
                       const std::wstring& userId)
{
    WebCall call(name, service::project, method, memberPath);
    return call.place(L"{teamId}", teamId).place(L"{userId}", userId).send(error);
}

} // namespace

std::wstring CreateTeam(ErrorCode& error, const std::wstring& name, const std::wstring& projectId)
{
    std::wstring id;
    if (name.empty() || projectId.empty()) {
        refuse(error, error::badInput, L"name or projectId is empty.");
        return id;
    }
    WebCall call(L"OrloWebService::CreateTeam", service::project, methods::POST, newTeamPath);
    WebAnswer answer = call.body(JsonBody().add(L"name", name).add(L"projectId", projectId).done()).send(error);
    if (answer.ok())
        readMember(answer.data(), L"id", id);
    return id;
}

bool GetTeamsInProject(ErrorCode& error, std::vector<CollaborationTeamInfo>& out, const std::wstring& projectId)
{
    out.clear();
    WebCall call(L"OrloWebService::GetTeamsInProject", service::project, methods::GET, teamsOfProjectPath);
    WebAnswer answer = call.place(L"{projectId}", projectId).send(error);
    if (!answer.ok())
        return false;
    if (answer.succeeded())
        teamFields().readList(answer.data(), out);
    return true;
}

bool AddUserToTeam(ErrorCode& error, const std::wstring& teamId, const std::wstring& userId)
{
    if (teamId.empty() || userId.empty())
        return refuse(error, error::badInput, L"AddUserToTeam:参数输入有误");
    return sendOfMember(error, L"OrloWebService::AddUserToTeam", methods::POST, teamId, userId).succeededOrTold();
}

bool DeleteUserFromTeam(ErrorCode& error, const std::wstring& teamId, const std::wstring& userId)
{
    if (teamId.empty() || userId.empty())
        return refuse(error, error::badInput, L"DeleteUserFromTeam::参数输入有误");
    return sendOfMember(error, L"OrloWebService::DeleteUserFromTeam", methods::DEL, teamId, userId).succeededOrTold();
}

bool getTeamIdByFolderId(ErrorCode& error, std::wstring& id, const std::wstring& folderId)
{
    // The platform takes this POST for a search.
    WebCall call(L"OrloWebService::getTeamIdByFolderId", service::project, methods::POST, teamSearchPath);
    call.untaggedFailureWords(L"OrloWebService::getTeamIdByFolderId - code:");
    WebAnswer answer = call.body(JsonBody().add(L"linkedFolderId", folderId).done()).send(error);
    if (!answer.ok())
        return false;
    if (!answer.data().is_array())
        return true;
    for (const web::json::value& team : answer.data().as_array()) {
        if (readMember(team, L"id", id))
            break;
    }
    return true;
}

bool GetTeamsOfUser(ErrorCode& error, std::vector<std::wstring>& ids, const std::wstring& userId, const std::wstring& projectId)
{
    WebCall call(L"OrloWebService::GetTeamsOfUser", service::project, methods::GET, teamsOfUserPath);
    call.place(L"{userId}", userId).place(L"{projectId}", projectId);
    WebAnswer answer = call.failureWords(L"CollaborationTeamManager::GetMyTeamsByProject - code:").send(error);
    if (!answer.ok())
        return false;
    const web::json::value& teams = answer.dataOfSuccess();
    if (!teams.is_array())
        return true;
    for (const web::json::value& team : teams.as_array()) {
        if (std::wstring id; readMember(team, L"id", id))
            ids.push_back(std::move(id));
    }
    return true;
}

bool GetTeamInfo(ErrorCode& error, CollaborationTeamInfo& out, const std::wstring& teamId)
{
    WebCall call(L"CollaborationTeam::GetTeamInfo", service::project, methods::GET, teamPath);
    WebAnswer answer = call.place(L"{teamId}", teamId).send(error);
    if (!answer.succeededOrTold())
        return false;
    teamFields().read(answer.data(), out);
    return true;
}

bool GetDatasetsOfTeam(ErrorCode& error, std::vector<DatasetInfo>& out, const std::wstring& teamId,
                       const std::optional<std::wstring>& status)
{
    WebCall call(L"CollaborationTeam::GetTeamDatasetInfos", service::project, methods::GET, datasetsOfTeamPath);
    call.place(L"{teamId}", teamId);
    if (status)
        call.query(L"status", *status);
    WebAnswer answer = call.send(error);
    return answer.succeededOrTold() && datasetInfoFields().readList(answer.data(), out);
}

bool SearchOwnDatasets(ErrorCode& error, std::vector<DatasetInfo>& out, const std::vector<std::wstring>& teamIds,
                       const std::wstring& status)
{
    // Intended: the words are those of the listing.
    WebCall call(L"CollaborationTeam::GetTeamDatasetInfos", service::project, methods::POST, ownDatasetsPath);
    WebAnswer answer = call.query(L"status", status).body(jsonTexts(teamIds)).send(error);
    if (!answer.succeededOrTold())
        return false;
    out.clear();
    return datasetInfoFields().readList(answer.data(), out);
}

bool GetDatasetsSharedWithTeam(ErrorCode& error, std::vector<TeamSharedDatasetInfo>& out, const std::wstring& teamId)
{
    WebCall call(L"CollaborationTeam::GetTeamSharedDatasets", service::project, methods::GET, sharedDatasetsPath);
    WebAnswer answer = call.place(L"{teamId}", teamId).query(L"type", L"TrustBy").send(error);
    return answer.succeededOrTold() && sharedDatasetFields().readList(answer.data(), out);
}

bool GetFoldersSharedWithTeam(ErrorCode& error, std::vector<TeamSharedFolderInfo>& out, const std::wstring& teamId)
{
    WebCall call(L"CollaborationTeam::GetTeamSharedFolders", service::project, methods::GET, sharedFoldersPath);
    WebAnswer answer = call.place(L"{teamId}", teamId).query(L"type", L"TrustBy").send(error);
    if (!answer.succeededOrTold())
        return false;
    // Intended: where the datasets' list would be empty, this throws.
    for (const web::json::value& folder : answer.data().as_array())
        sharedFolderFields().read(folder, out.emplace_back());
    return true;
}

} // namespace orlo::OrloWebService
