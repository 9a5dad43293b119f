#include "WebFunctionRegistry.h"

#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/NetworkProject/Design/BuildingItemWeb.h>
#include <OrloProjectManager/NetworkProject/Design/ConfigWeb.h>
#include <OrloProjectManager/NetworkProject/Issues/IssueWeb.h>
#include <OrloProjectManager/NetworkProject/Messages/MessageWeb.h>
#include <OrloProjectManager/NetworkProject/Permission/DatasetPermissionWeb.h>
#include <OrloProjectManager/NetworkProject/Projects/DatasetWeb.h>
#include <OrloProjectManager/NetworkProject/Projects/FolderWeb.h>
#include <OrloProjectManager/NetworkProject/Projects/PermissionWeb.h>
#include <OrloProjectManager/NetworkProject/Projects/ProjectWeb.h>
#include <OrloProjectManager/NetworkProject/Projects/SpecialtyWeb.h>
#include <OrloProjectManager/NetworkProject/Projects/VersionWeb.h>
#include <OrloProjectManager/NetworkProject/Resources/ArchiveWeb.h>
#include <OrloProjectManager/NetworkProject/Resources/ComponentWeb.h>
#include <OrloProjectManager/NetworkProject/Resources/FontWeb.h>
#include <OrloProjectManager/NetworkProject/Resources/ModuleWeb.h>
#include <OrloProjectManager/NetworkProject/Resources/TemplateWeb.h>
#include <OrloProjectManager/NetworkProject/Teams/ShareWeb.h>
#include <OrloProjectManager/NetworkProject/Teams/TeamWeb.h>
#include <OrloProjectManager/NetworkProject/Transfer/FileWeb.h>
#include <OrloProjectManager/NetworkProject/Transfer/TransferWeb.h>
#include <OrloProjectManager/NetworkProject/Transfer/TranslationWeb.h>

#include <ostream>

namespace orlo::test {

namespace {

using namespace OrloWebService;

http::ORLOHTTPPayloadProject sampleProject()
{
    http::ORLOHTTPPayloadProject project;
    project.name = L"name";
    project.status = ProjectStatus::Ongoing;
    return project;
}

http::ORLOHTTPPayloadDataset sampleDataset()
{
    http::ORLOHTTPPayloadDataset dataset;
    dataset.name = L"name";
    dataset.teamId = L"team";
    return dataset;
}

http::ORLOHTTPPayloadDatasetVersion sampleVersion()
{
    http::ORLOHTTPPayloadDatasetVersion version;
    version.dataSetId = "dataset";
    version.dataSetSourceFile = L"file";
    return version;
}

bool applyToWrite(ErrorCode& error)
{
    DatasetPermissionFailure failure;
    std::string token = "perm-secret";
    int monitor = 0;
    return ApplyForWriteDataset(error, failure, token, monitor, "dataset");
}

bool applyToRead(ErrorCode& error)
{
    DatasetPermissionFailure failure;
    std::string token;
    return ApplyForReadDataset(error, failure, token, "dataset");
}

/// Works for a signed-in user only; where there is no host yet, somebody is signed in for the length of the call.
bool archivePackages(ErrorCode& error)
{
    const bool hasUser = UserSession::GetInstance() != nullptr;
    if (!hasUser)
        UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    const std::shared_ptr<void> signOut(nullptr, [&](void*) {
        if (!hasUser)
            UserSession::SignOut();
    });
    http::ORLOHTTPPayloadArchivePackageAck packages;
    return GetArchivePackageListByProjectId(error, packages, L"project");
}

bool latestConfig(ErrorCode& error)
{
    std::vector<ProjectItemConfig> items;
    int revision = 0;
    return GetLatestConfigByProjectIdAndOwnerId(error, items, &revision, L"item", L"project", ConfigType::Coordinate);
}

bool searchAllComponents(ErrorCode& error)
{
    std::vector<Component> components;
    int totalCount = 0;
    return SearchComponents(error, components, totalCount, L"project", {{}, L"keyword", 1, 20});
}

} // namespace

void PrintTo(const WebFunction& row, std::ostream* out)
{
    *out << row.name;
}

// To add a web function: its name, its failure line as logged (empty for silence), a call with sample arguments, what it
// makes of a body if that is not JSON of any shape, and its service if that is not "project".
const std::vector<WebFunction>& webFunctions()
{
    static const std::vector<WebFunction> rows{
        // Projects
        {"GetAllProjects", L"E [ORLOSDK]OrloWebService::GetAllProjects - code:", into(&GetAllProjects, L"DEFAULT")},
        {"GetProjectsByStatus", L"E [ORLOSDK]OrloWebService::GetAllProjects - code:", into(&GetProjectsByStatus, L"Ongoing")},
        {"GetSampleProjects", L"E [ORLOSDK]OrloWebService::GetSampleProjects - code:", into(&GetSampleProjects)},
        {"CreateProjectV2", L"E [ORLOSDK]OrloWebService::CreateProjectV2 - code:", into(&CreateProjectV2, sampleProject())},
        {"GetProject", L"", into(&GetProject, L"project")},
        {"DeleteProject", L"E [ORLOSDK]OrloWebService::DeleteProject - code:", plain(&DeleteProject, L"project"), Body::unread},
        {"GetResourceLimit", L"E [ORLOSDK]OrloWebService::GetResourceLimit - code:", into(&GetResourceLimit)},
        {"getProjectIdByDataset", L"E [ORLOSDK]OrloWebService::getProjectIdByDataset - code:", plain(&getProjectIdByDataset, "dataset")},
        {"getProjectIdByModelingId", L"E [ORLOSDK]OrloWebService::getProjectIdByModelingId - code:",
         plain(&getProjectIdByModelingId, "modeling")},
        // Folders, teams and specialties
        {"GetAllFoldersByProject", L"E [ORLOSDK]OrloWebService::GetAllFoldersByProject - code:", into(&GetAllFoldersByProject, L"project")},
        {"GetRootFolderOfProject", L"E [ORLOSDK]OrloWebService::GetRootFolderOfProject - code:", into(&GetRootFolderOfProject, L"project")},
        {"GetSubFoldersOfParentFolder", L"E [ORLOSDK]OrloWebService::GetSubFoldersOfParentFolder - code:",
         into(&GetSubFoldersOfParentFolder, L"folder", true)},
        {"GetTeamsInProject", L"E [ORLOSDK]OrloWebService::GetTeamsInProject - code:", into(&GetTeamsInProject, L"project")},
        {"GetSpecialty", L"E [ORLOSDK]OrloWebService::GetSpecialty - code:", into(&GetSpecialty, L"specialty")},
        {"GetSpecialtiesInProject", L"E [ORLOSDK]OrloWebService::GetSpecialtiesInProject - code:",
         into(&GetSpecialtiesInProject, L"project")},
        {"CreateSpecialty", L"", plain(&CreateSpecialty, L"project", L"ZOK", L"name")},
        {"GetAuthorizationOfUserInProject", L"E [ORLOSDK]OrloWebService::GetAuthorizationOfUserInProject - code:",
         into(&GetAuthorizationOfUserInProject, L"project", L"user"), Body::json, Way::plain, L"authorization"},
        {"CreateTeam", L"E [ORLOSDK]OrloWebService::CreateTeam - code:", plain(&CreateTeam, L"name", L"project")},
        {"AddUserToTeam", L"E [ORLOSDK]OrloWebService::AddUserToTeam - code:", plain(&AddUserToTeam, L"team", L"user")},
        {"DeleteUserFromTeam", L"E [ORLOSDK]OrloWebService::DeleteUserFromTeam - code:", plain(&DeleteUserFromTeam, L"team", L"user")},
        {"getTeamIdByFolderId", L"E OrloWebService::getTeamIdByFolderId - code:", into(&getTeamIdByFolderId, L"folder")},
        {"GetTeamsOfUser", L"E [ORLOSDK]CollaborationTeamManager::GetMyTeamsByProject - code:", into(&GetTeamsOfUser, L"user", L"project")},
        {"GetTeamInfo", L"E [ORLOSDK]CollaborationTeam::GetTeamInfo - code:", into(&GetTeamInfo, L"team")},
        {"GetDatasetsOfTeam", L"E [ORLOSDK]CollaborationTeam::GetTeamDatasetInfos - code:",
         into(&GetDatasetsOfTeam, L"team", std::optional<std::wstring>(L"draft"))},
        {"SearchOwnDatasets", L"E [ORLOSDK]CollaborationTeam::GetTeamDatasetInfos - code:",
         into(&SearchOwnDatasets, std::vector<std::wstring>{L"team"}, L"draft")},
        {"GetDatasetsSharedWithTeam", L"E [ORLOSDK]CollaborationTeam::GetTeamSharedDatasets - code:",
         into(&GetDatasetsSharedWithTeam, L"team")},
        {"GetFoldersSharedWithTeam", L"E [ORLOSDK]CollaborationTeam::GetTeamSharedFolders - code:",
         into(&GetFoldersSharedWithTeam, L"team"), Body::strict},
        {"getShareRecordByTeamId", L"E OrloWebService::getShareRecordByTeamId - code:", into(&getShareRecordByTeamId, L"team")},
        {"getShareContentById", L"E OrloWebService::getShareContentById - code:", into(&getShareContentById, L"record")},
        {"getResourceId", L"E OrloWebService::getResourceId - code:",
         into(&getResourceId, L"visitor", ORLOSubjectType::Team, ORLOResourceType::DataSet)},
        // Datasets and versions
        {"GetDataSetsByFolder", L"E [ORLOSDK]OrloWebService::GetDataSetsByFolder - code:", into(&GetDataSetsByFolder, L"folder")},
        {"GetDatasetInfo", L"E [ORLOSDK]OrloWebService::GetDatasetInfo - code:", into(&GetDatasetInfo, "dataset")},
        {"GetDatasetInfoByModelingId", L"E [ORLOSDK]OrloWebService::getProjectIdByModelingId - code:",
         into(&GetDatasetInfoByModelingId, "modeling")},
        {"GetDatasetByStatus", L"E [ORLOSDK]OrloWebService::GetAllProjects - code:", into(&GetDatasetByStatus, L"project", L"draft")},
        {"CreateDataSet", L"", into(&CreateDataSet, sampleDataset())},
        {"CreateVersion", L"", into(&CreateVersion, sampleVersion())},
        {"CreateDocVersion", L"", into(&CreateDocVersion, sampleVersion())},
        {"CreateVersionByNumber", L"", plain(&CreateVersionByNumber, L"dataset", 1, L"meta", true, L"words")},
        {"GetDatasetVersionByMvd", L"E [ORLOSDK]OrloWebService::GetDatasetVersionByMvd - code:",
         into(&GetDatasetVersionByMvd, "dataset", 1, L"")},
        {"GetVersionOfFile", L"", into(&GetVersionOfFile, "dataset", 1)},
        {"GetDownloadAddress", L"E [ORLOSDK]OrloWebService::AcquireDownloadAuthorityAsync - code:", into(&GetDownloadAddress, L"a/b")},
        {"GetDocumentDownloadAddress", L"E [ORLOSDK]OrloWebService::AcquireDownloadAuthorityAsync - code:",
         into(&GetDocumentDownloadAddress, L"file", 1)},
        {"GetDatasetVersionAccordingMVD", L"E [ORLOSDK]OrloWebService::GetDatasetVersionByMVD - code:",
         into(&GetDatasetVersionAccordingMVD, std::vector<int>{1}, "base")},
        {"MarkPublish", L"", plain(&MarkPublish, "dataset", L"1", L"words")},
        {"GetDatasetMeta", L"E [ORLOSDK]IVersion::GetDatasetMeta - code:",
         plain(&GetDatasetMeta, DatasetMetaKey::SpaceConfigVersion, L"version"), Body::unread},
        {"UpsertDatasetMeta", L"E IVersion::UpsertDatasetMeta - code:",
         plain(&UpsertDatasetMeta, DatasetMetaKey::SpaceConfigVersion, L"value", L"version"), Body::unread},
        {"GetFamilyFileUrl", L"E [ORLOSDK]OrloWebService::GetFamilyFileUrl - code:",
         plain(&GetFamilyFileUrl, L"project", L"family", L"version"), Body::told, Way::plain, L"structure"},
        // Templates
        {"CreateTemplate", L"E [ORLOSDK]OrloWebService::CreateTemplate - code:", plain(&CreateTemplate, L"project", L"name")},
        {"DeleteTemplate", L"E [ORLOSDK]OrloWebService::DeleteTemplate - code:", plain(&DeleteTemplate, L"template")},
        {"GetProjectTemplatesOfUser", L"E [ORLOSDK]OrloWebService::GetProjectTemplatesOfUser - code:", into(&GetProjectTemplatesOfUser)},
        {"AddTemplateToProject", L"E [ORLOSDK]OrloWebService::AddTemplateToProject - code:",
         plain(&AddTemplateToProject, L"project", L"uri", L"name", L"ZOK", 1), Body::unread, Way::plain, L"structure"},
        {"IsTemplateExistedInProject", L"E [ORLOSDK]OrloWebService::IsTemplateExistedInProject - code:",
         plain(&IsTemplateExistedInProject, L"name", L"project"), Body::json, Way::plain, L"structure"},
        {"GetAllTemplatesOfProject", L"E [ORLOSDK]OrloWebService::GetAllTemplatesOfProject - code:",
         into(&GetAllTemplatesOfProject, L"project"), Body::json, Way::plain, L"structure"},
        {"GetDatasetSampleFile", L"", into(&GetDatasetSampleFile, L"dataset", L"project"), Body::json, Way::plain, L"structure"},
        {"GetTemplateResource", L"", into(&GetTemplateResource, L"template"), Body::json, Way::plain, L"structure"},
        {"GetTemplateResourceUrl", L"", into(&GetTemplateResourceUrl, L"1", L"template"), Body::json, Way::plain, L"structure"},
        // Configurations
        {"AddDefaultSpaceConfig", L"E [ORLOSDK]OrloWebService::AddDefaultSpaceConfig - code:", plain(&AddDefaultSpaceConfig, L"project"),
         Body::unread},
        {"UpdateSpaceConfig", L"E [ORLOSDK]OrloWebService::UpdateSpaceConfig - code:", plain(&UpdateSpaceConfig, L"{}", L"project"),
         Body::unread},
        {"UpdateProjectConfig", L"", plain(&UpdateProjectConfig, L"{}", L"project", ConfigType::GridConfig), Body::unread},
        {"GetSpaceConfig", L"E [ORLOSDK]Project::GetSpaceConfig - code:", into(&GetSpaceConfig, L"project", 1)},
        {"GetSpaceConfigVersions", L"E [ORLOSDK]Project::GetSpaceConfigVersions - code:", into(&GetSpaceConfigVersions, L"project")},
        {"GetAxisGridConfig", L"E [ORLOSDK]Project::GetAxisGridConfig - code:", into(&GetAxisGridConfig, L"project", 1), Body::unread},
        {"GetAxisGridConfigVersions", L"E [ORLOSDK]Project::GetAxisGridConfigVersions - code:",
         into(&GetAxisGridConfigVersions, L"project")},
        // Building items
        {"AddBuildingItem", L"E [ORLOSDK]Project::AddBuildingItem - code:", into(&AddBuildingItem, L"project", 1, L"{}")},
        {"UpdateBuildingItem", L"E [ORLOSDK]Project::UpdateBuildingItem - code:", plain(&UpdateBuildingItem, L"project", 1, L"item", L"{}"),
         Body::unread},
        {"DeleteBuildingItem", L"E [ORLOSDK]Project::DeleteBuildingItem - code:", plain(&DeleteBuildingItem, L"project", 1, L"item"),
         Body::unread},
        {"GetBuildingItems", L"E [ORLOSDK]Project::GetBuildingItems - code:", into(&GetBuildingItems, L"project", 1)},
        {"GetBuildingItem", L"E [ORLOSDK]Project::GetBuildingItem - code:", into(&GetBuildingItem, L"project", L"item", 1)},
        {"GetLatestBuildingItem", L"E [ORLOSDK]Project::GetLatestBuildingItem - code:", into(&GetLatestBuildingItem, L"project", L"item")},
        {"GetLatestConfigByProjectIdAndOwnerId", L"E [ORLOSDK]Project::GetLatestConfigByProjectIdAndOwnerId - code:", latestConfig},
        {"GetProjectItemConfig", L"E [ORLOSDK]Project::GetProjectItemConfig - code:",
         into(&GetProjectItemConfig, L"project", L"item", ConfigType::Coordinate, 1)},
        {"CreateProjectItemConfig", L"E [ORLOSDK]Project::CreateProjectItemConfig - code:",
         plain(&CreateProjectItemConfig, L"project", L"item", ConfigType::Coordinate, L"{}"), Body::unread},
        {"UpdateProjectItemConfig", L"E [ORLOSDK]Project::UpdateProjectItemConfig - code:",
         plain(&UpdateProjectItemConfig, L"project", L"item", ConfigType::Coordinate, 1, L"{}"), Body::unread},
        {"AssociateDatasetAndBuildingItem", L"E [ORLOSDK]Project::AssociateDatasetAndBuildingItem - code:",
         plain(&AssociateDatasetAndBuildingItem, L"project", L"dataset", L"item"), Body::unread},
        {"GetBuildingItemIdsByDatasetId", L"E [ORLOSDK]Project::GetBuildingItemIdsByDatasetId - code:",
         into(&GetBuildingItemIdsByDatasetId, L"project", L"dataset")},
        {"GetDatasetIdsByBuildingItemId", L"E [ORLOSDK]Project::GetDatasetIdsByBuildingItemId - code:",
         into(&GetDatasetIdsByBuildingItemId, L"project", L"item")},
        // Files
        {"CreateFileDatasetRelationship", L"E [ORLOSDK]OrloWebService::CreateFileDatasetRelationship - code:",
         plain(&CreateFileDatasetRelationship, "dataset", 1, "drawing", 1), Body::unread, Way::tellsMessage},
        {"QueryFileRelatedDatasets", L"E [ORLOSDK]OrloWebService::QueryFileRelatedDatasets - code:",
         into(&QueryFileRelatedDatasets, "drawing", 1), Body::json, Way::tellsMessage},
        {"DeleteFileOfProject", L"E [ORLOSDK]OrloWebService::DeleteFileByFileId - code:", plain(&DeleteFileOfProject, L"project", L"file"),
         Body::unread},
        {"DeleteFileByFileId", L"E [ORLOSDK]OrloWebService::DeleteFileByFileId - code:", plain(&DeleteFileByFileId, L"project", L"file"),
         Body::unread, Way::framed},
        {"TriggerSightlineTranslateWorkerByUploadJob", L"E [ORLOSDK]OrloWebService::TriggerSightlineTranslateWorkerByUploadJob - code:",
         plain(&TriggerSightlineTranslateWorkerByUploadJob, "dataset", 1, L"type"), Body::unread, Way::plain, L"slproxy"},
        // Permissions
        {"ApplyForWriteDataset", L"E [ORLOSDK]OrloWebService::ApplyForWriteDataset - code:", applyToWrite, Body::json, Way::tellsReason},
        {"ApplyForReadDataset", L"E [ORLOSDK]OrloWebService::ApplyForReadDataset - code:", applyToRead, Body::json, Way::tellsReason},
        {"ObtainPermissionTokenAck", L"E [ORLOSDK]OrloWebService::ObtainPermissionTokenAck - code:",
         into(&ObtainPermissionTokenAck, "dataset", "perm-secret"), Body::unread, Way::tellsReason},
        {"ReleaseDatasetPermissionMonitor", L"E [ORLOSDK]OrloWebService::ReleaseDatasetPermissionMonitor - code:",
         into(&ReleaseDatasetPermissionMonitor, "perm-secret"), Body::json, Way::tellsReason},
        {"ReleaseDatasetPermissionMonitorForce", L"E [ORLOSDK]OrloWebService::ReleaseDatasetPermissionMonitorForce - code:",
         plain(&ReleaseDatasetPermissionMonitorForce, L"perm-secret"), Body::json, Way::tellsWords},
        {"GetDatasetEditToken", L"E [ORLOSDK]OrloWebService::GetDatasetEditToken - code:", into(&GetDatasetEditToken, L"dataset")},
        // Issues and messages
        {"GetIssuesListByDataSetId", L"E [ORLOSDK]OrloWebService::GetIssuesListByDataSetId - code:",
         into(&GetIssuesListByDataSetId, "dataset", 1)},
        {"GetIssuesListByTeamId", L"E [ORLOSDK]OrloWebService::GetIssuesListByDataSetId - code:",
         into(&GetIssuesListByTeamId, "team", 1, false)},
        {"PostIssue", L"E [ORLOSDK]OrloWebService::PostIssue - code:",
         [](ErrorCode& error) {
             return PostIssue(error, *IIssue::Create(L"team", L"user", L"title", L"words", {}, EORLOIssueType::Comments), {});
         },
         Body::unread},
        {"SolveIssue", L"E [ORLOSDK]OrloWebService::CreateMessage - code:", plain(&SolveIssue, L"user", 1, L"memo")},
        {"CloseIssue", L"E [ORLOSDK]OrloWebService::CreateMessage - code:", plain(&CloseIssue, L"user", 1, L"memo")},
        {"SubmitIssue", L"E [ORLOSDK]OrloWebService::CreateMessage - code:", plain(&SubmitIssue, L"user", 1, L"memo")},
        {"ReopenIssue", L"E [ORLOSDK]OrloWebService::CreateMessage - code:", plain(&ReopenIssue, L"user", 1, L"memo")},
        {"DealIssue", L"E [ORLOSDK]OrloWebService::CreateMessage - code:", plain(&DealIssue, L"user", 1, L"memo")},
        {"GetMessages", L"E OrloWebService::GetMessages - code:", into(&GetMessages, L"UNREAD", L"", L""), Body::json, Way::plain,
         L"message"},
        {"MarkMessage", L"E OrloWebService::GetMessages - code:", plain(&MarkMessage, 1, L"SYSTEM", L"READ"), Body::json, Way::plain,
         L"message"},
        // Resources
        {"GetProjectFonts", L"", into(&GetProjectFonts, L"project"), Body::json, Way::plain, L"structure"},
        {"GetFontDownloadUri", L"", into(&GetFontDownloadUri, L"font", L"project"), Body::json, Way::plain, L"structure"},
        // Components
        {"GetCategoryCodes", L"E [ORLOSDK]OrloWebService::GetCategoryCodes - code:",
         into(&GetCategoryCodes, L"project", SpecialtyType::ZOK), Body::json, Way::plain, L"structure"},
        {"GetCategoryTree", L"E [ORLOSDK]OrloWebService::GetCategoryTree - code:",
         into(&GetCategoryTree, L"project", std::vector<std::wstring>{L"code"}, L"keyword", L"2024.1"), Body::json, Way::plain,
         L"structure"},
        {"GetCategoryTreeCanBeUpdated", L"E [ORLOSDK]OrloWebService::GetCategoryTreeCanBeUpdated - code:",
         into(&GetCategoryTreeCanBeUpdated, L"project", SpecialtyType::ZOK, std::vector<ComponentInfo>{{1}}, L"keyword"), Body::json,
         Way::plain, L"structure"},
        {"SearchComponents", L"E [ORLOSDK]OrloWebService::SearchComponents - code:", searchAllComponents, Body::json, Way::plain,
         L"structure"},
        {"SearchComponentsCanBeUpdated", L"E [ORLOSDK]OrloWebService::SearchComponentsCanBeUpdated - code:",
         into(&SearchComponentsCanBeUpdated, L"project", std::vector<ComponentInfo>{{1}}, L"code", L"keyword", SpecialtyType::ZOK),
         Body::json, Way::plain, L"structure"},
        {"GetComponentsChanged", L"E [ORLOSDK]OrloWebService::GetComponentsChanged - code:",
         into(&GetComponentsChanged, L"project", SpecialtyType::ZOK, 0), Body::json, Way::plain, L"structure"},
        {"GetDetailInfoOfComponent", L"E [ORLOSDK]OrloWebService::GetDetailInfoOfComponent - code:",
         into(&GetDetailInfoOfComponent, L"project", L"component", 1), Body::json, Way::plain, L"structure"},
        {"IsComponentExist", L"E [ORLOSDK]OrloWebService::IsComponentExist - code:", into(&IsComponentExist, L"project", L"component"),
         Body::json, Way::plain, L"structure"},
        {"GetFamilyTypeInfoOfComponent", L"E [ORLOSDK]OrloWebService::GetFamilyTypeInfoOfComponent - code:",
         into(&GetFamilyTypeInfoOfComponent, L"project", L"component", 1, L"name"), Body::json, Way::plain, L"structure"},
        {"GetAllFamilyTypeInfosOfComponent", L"E [ORLOSDK]OrloWebService::GetAllFamilyTypeInfosOfComponent - code:",
         into(&GetAllFamilyTypeInfosOfComponent, L"project", L"component", 1), Body::json, Way::plain, L"structure"},
        {"GetCutlineOfComponent", L"E [ORLOSDK]OrloWebService::GetCutlineOfComponent - code:",
         into(&GetCutlineOfComponent, L"project", L"component", 1), Body::json, Way::plain, L"structure"},
        {"GetDownloadUrlOfComponent", L"E [ORLOSDK]OrloWebService::GetDownloadUrlOfComponent - code:",
         into(&GetDownloadUrlOfComponent, L"project", L"component", 1), Body::json, Way::plain, L"structure"},
        {"GetXmlInfoOfComponent", L"E [ORLOSDK]OrloWebService::GetXmlInfoOfComponent - code:",
         into(&GetXmlInfoOfComponent, L"project", L"component", 1), Body::unread, Way::plain, L"structure"},
        {"DeleteComponent", L"E [ORLOSDK]OrloWebService::DeleteComponent - code:", into(&DeleteComponent, L"project", L"component"),
         Body::json, Way::plain, L"structure"},
        {"UpgradeComponent", L"E [ORLOSDK]OrloWebService::UpgradeComponent - code:",
         into(&UpgradeComponent, L"project", L"component", L"{}"), Body::json, Way::plain, L"structure"},
        {"UploadComponent", L"E [ORLOSDK]OrloWebService::UploadComponent - code:", into(&UploadComponent, L"project", L"{}"), Body::json,
         Way::plain, L"structure"},
        {"AddComponentsWithIds", L"E [ORLOSDK]Project::AddComponentsWithIds - code:",
         plain(&AddComponentsWithIds, L"project", std::map<std::wstring, std::wstring>{{L"1", L"public"}}), Body::json, Way::plain,
         L"structure"},
        {"GetModuleCategories", L"E [ORLOSDK]OrloWebService::GetModuleCategories - code:",
         into(&GetModuleCategories, L"space", L"parameter", L"type", L"tree"), Body::json, Way::plain, L"module"},
        {"IsModuleCanUpload", L"E [ORLOSDK]OrloWebService::IsModuleCanUpload - code:",
         plain(&IsModuleCanUpload, L"space", L"parameter", L"application", L"md5", L"name", L"category", L"type", L"module"), Body::json,
         Way::plain, L"module"},
        {"AddModuleToProject", L"E [ORLOSDK]OrloWebService::GetModuleCategories - code:",
         into(&AddModuleToProject, L"space", L"parameter", NewModule{L"zok", L"category", L"type", L"key", L"md5", L"name", L"url"}),
         Body::refused, Way::plain, L"module"},
        {"GetArchivePackageListByProjectId", L"E [ORLOSDK]OrloWebService::GetArchivePackageListByProjectId - code:", archivePackages},
        {"GetArchiveUnitListByArchivePackageId", L"E [ORLOSDK]OrloWebService::GetArchiveUnitListByArchivePackageId - code:",
         into(&GetArchiveUnitListByArchivePackageId, std::vector<std::wstring>{L"package"})},
        {"GetArchiveUnitVersionById", L"E [ORLOSDK]OrloWebService::GetArchiveUnitVersionById - code:",
         into(&GetArchiveUnitVersionById, std::vector<std::wstring>{L"unit"})},
        {"GetArchiveUnitStandardCode", L"E [ORLOSDK]OrloWebService::GetArchiveUnitStandardCode - code:",
         into(&GetArchiveUnitStandardCode, std::vector<int>{1})},
    };
    return rows;
}

} // namespace orlo::test
