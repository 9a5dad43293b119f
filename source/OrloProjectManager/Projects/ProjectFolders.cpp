// The folder tree of a project, its teams, specialties and permissions.

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/FolderWeb.h"
#include "../NetworkProject/Projects/PermissionWeb.h"
#include "../NetworkProject/Projects/ProjectTexts.h"
#include "../NetworkProject/Projects/SpecialtyWeb.h"
#include "../NetworkProject/Teams/TeamWeb.h"
#include "Folder.h"
#include "Project.h"

#include <OrloNetwork/WebRequest.h>
#include <OrloProjectManager/Teams/ICollaborationTeam.h>

#include <algorithm>

namespace orlo {

using http::ORLOHTTPPayloadFolder;

namespace {

constexpr int typeOfTeamFolders = 5;

/// Of several permissions the first of these counts.
PermissionType strongestOf(const std::vector<std::wstring>& permissions)
{
    const auto holds = [&](const wchar_t* name) { return std::find(permissions.begin(), permissions.end(), name) != permissions.end(); };
    if (holds(L"Write"))
        return PermissionType::Write;
    if (holds(L"SoftWrite"))
        return PermissionType::SoftWrite;
    return holds(L"Read") ? PermissionType::Read : PermissionType::None;
}

void readPermission(const web::json::value& element, std::map<std::wstring, PermissionType>& out)
{
    const web::json::value* const resource = memberOf(element, L"resource");
    const web::json::value* const permissionTypes = memberOf(element, L"permissionTypes");
    if (!resource || !permissionTypes)
        return;
    std::wstring key;
    readField(*resource, key);
    std::vector<std::wstring> permissions;
    readField(*permissionTypes, permissions);
    out[key] = strongestOf(permissions);
}

} // namespace

Project::Folders Project::GetFolders(ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetFolders")).run(error, [&] {
        m_folders.clear();
        auto records = fetched(&OrloWebService::GetAllFoldersByProject, error, m_id);
        if (!records)
            return Folders();
        FolderCreatorAlg creator(groupByParent(std::move(*records)));
        for (const ORLOHTTPPayloadFolder& root : creator.takeRoots())
            m_folders.push_back(creator.createFolder(root));
        return m_folders;
    });
}

std::vector<ICollaborationFolder*> Project::GetFolders(ErrorCode& error) const
{
    // The tree is built anew here too: the raw pointers must have an owner.
    return rawPointers(const_cast<Project*>(this)->GetFolders(error));
}

bool Project::GetProjectFolders(Folders& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetProjectFolders")).run(error, [&] {
        m_projectFolders.clear();
        const auto root = fetched(&OrloWebService::GetRootFolderOfProject, error, m_id);
        if (!root)
            return false;
        auto records = fetched(&OrloWebService::GetSubFoldersOfParentFolder, error, root->id, true);
        if (!records)
            return false;
        FolderCreatorAlg creator(groupByParent(std::move(*records)));
        m_projectFolders.push_back(creator.createFolder(*root));
        out = m_projectFolders;
        return true;
    });
}

ICollaborationFolder* Project::GetTeamFolder(const std::wstring& teamId, int folderType)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetTeamFolder")).runAlone([&](ErrorCode&) -> ICollaborationFolder* {
        const auto ofTeam = [&](const ICollaborationFolder& folder) {
            const auto team = folder.GetTeam();
            return folder.GetFolderType() == typeOfTeamFolders && team && team->GetTeamId() == teamId;
        };
        ICollaborationFolder* const teamFolder = findFolder(rawPointers(GetFolders()), ofTeam);
        return teamFolder ? findFolder({teamFolder}, [&](const auto& folder) { return folder.GetFolderType() == folderType; }) : nullptr;
    });
}

bool Project::GetTeams(std::vector<CollaborationTeamInfo>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetTeams")).run(error, [&] {
        return retried(&OrloWebService::GetTeamsInProject, error, out, m_id);
    });
}

bool Project::GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetSpecialtyTypes")).run(error, [&] {
        const auto records = fetched(&OrloWebService::GetSpecialtiesInProject, error, m_id);
        if (!records) {
            log::error(L"fail to get specialties of project.");
            return false;
        }
        for (const http::ORLOHTTPPayloadSpecialty& record : *records)
            out[specialtyTexts().valueOf(record.type)] = record.id;
        return true;
    });
}

std::wstring Project::CreateSpecialty(SpecialtyType type, const std::wstring& name, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::CreateSpecialty")).run(error, [&] {
        return retried(&OrloWebService::CreateSpecialty, error, m_id, textOf(type), name);
    });
}

bool Project::GetPermissionTypes(std::map<std::wstring, PermissionType>& out, ErrorCode& error)
{
    constexpr const char* function = "orlo::Project::GetPermissionTypes";
    return CallFrame(ORLO_HERE(function)).runDirect(error, [&] {
        const auto user = OrloWebService::GetCurrentUserInfo();
        web::json::value permissions;
        if (!OrloWebService::GetAuthorizationOfUserInProject(error, permissions, GetId(), user ? user->getAccountId() : std::wstring())) {
            log::errorAt(ORLO_HERE(function), L"GetPermissionTypes()未正常执行!");
            return false;
        }
        if (permissions.is_array()) {
            for (const web::json::value& element : permissions.as_array())
                readPermission(element, out);
        }
        return true;
    });
}

} // namespace orlo
