#include "ProjectManager.h"

#include "../Frame/CallFrame.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Design/ConfigWeb.h"
#include "../NetworkProject/Projects/DatasetReaders.h"
#include "../NetworkProject/Projects/DatasetWeb.h"
#include "../NetworkProject/Projects/ProjectTexts.h"
#include "../NetworkProject/Projects/ProjectWeb.h"
#include "../NetworkProject/Projects/SpecialtyWeb.h"
#include "Project.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>
#include <OrloLogging/NotOnTerminal.h>

#include <limits>

namespace orlo {

using http::ORLOHTTPPayloadProject;
using ProjectPtr = std::shared_ptr<ICollaborationProject>;

namespace {

void appendProjects(std::vector<ORLOHTTPPayloadProject> records, ICollaborationProjectManager::Projects& projects)
{
    projects.reserve(projects.size() + records.size());
    for (ORLOHTTPPayloadProject& record : records)
        projects.push_back(toProject(std::move(record)));
}

bool isGuid(const std::wstring& projectId)
{
    if (uuid::IsValidGUID(utils::toString(projectId)))
        return true;
    log::error(L"projectId is not a valid guid.");
    return false;
}

/// Sizes come from the platform, so their sum may not fit.
std::int64_t boundedSum(std::int64_t a, std::int64_t b)
{
    using Limits = std::numeric_limits<std::int64_t>;
    if (b > 0 && a > Limits::max() - b)
        return Limits::max();
    if (b < 0 && a < Limits::min() - b)
        return Limits::min();
    return a + b;
}

enum class DefaultSpaceConfig { add, omit };

/// `announcement` heads the log line about the default space configuration.
ProjectPtr createProject(const CallSite& site, const ORLOHTTPPayloadProject& wanted, DefaultSpaceConfig defaultSpaceConfig,
                         const std::wstring& announcement, ErrorCode& error)
{
    auto created = fetched(&OrloWebService::CreateProjectV2, error, wanted);
    if (!created) {
        log::errorAt(site, L"fail to create project.");
        return nullptr;
    }
    if (defaultSpaceConfig == DefaultSpaceConfig::add) {
        // The project exists, so a failure here is told in the log and not in the caller's ErrorCode.
        ErrorCode ofConfig;
        const bool added = retried(&OrloWebService::AddDefaultSpaceConfig, ofConfig, created->id);
        const log::NotOnTerminal quiet(added); // good news alarm nobody
        log::errorAt(site, announcement + (added ? L"成功" : L"失败"));
    }
    return toProject(std::move(*created));
}

ORLOHTTPPayloadProject projectNamed(const std::wstring& name, ProjectStatus status)
{
    ORLOHTTPPayloadProject project;
    project.name = name;
    project.status = status;
    return project;
}

constexpr const wchar_t* defaultSpaceConfigOfProject = L"创建项目添加默认空间配置";
constexpr const wchar_t* defaultSpaceConfigOfTestProject = L"测试项目添加默认空间配置";

DefaultSpaceConfig unlessFromTemplate(const std::wstring& templateId)
{
    return templateId.empty() ? DefaultSpaceConfig::add : DefaultSpaceConfig::omit;
}

} // namespace

ICollaborationProjectManager::ICollaborationProjectManager() = default;
ICollaborationProjectManager::~ICollaborationProjectManager() = default;

ICollaborationProjectManager* ICollaborationProjectManager::Get()
{
    static auto& manager = utils::neverDestroyed(new ProjectManager);
    return &manager;
}

ProjectPtr ProjectManager::CreateProject(const std::wstring& name, ProjectStatus status, ErrorCode& error)
{
    constexpr const char* function = "orlo::ProjectManager::CreateProject";
    return CallFrame(ORLO_HERE(function)).run(error, [&] {
        return createProject(ORLO_HERE(function), projectNamed(name, status), DefaultSpaceConfig::add, defaultSpaceConfigOfProject, error);
    });
}

ProjectPtr ProjectManager::CreateProject(const std::wstring& name, ProjectStatus status, const std::wstring& templateId)
{
    constexpr const char* function = "orlo::ProjectManager::CreateProject";
    return CallFrame(ORLO_HERE(function)).runAlone([&](ErrorCode& error) {
        ORLOHTTPPayloadProject wanted = projectNamed(name, status);
        wanted.templateId = templateId;
        return createProject(ORLO_HERE(function), wanted, unlessFromTemplate(templateId), defaultSpaceConfigOfTestProject, error);
    });
}

ProjectPtr ProjectManager::CreateProjectById(const std::wstring& name, ProjectStatus status, const std::wstring& projectId,
                                             ErrorCode& error)
{
    constexpr const char* function = "orlo::ProjectManager::CreateProjectById";
    return CallFrame(ORLO_HERE(function)).run(error, [&]() -> ProjectPtr {
        if (!isGuid(projectId))
            return nullptr;
        ORLOHTTPPayloadProject wanted = projectNamed(name, status);
        wanted.id = projectId;
        return createProject(ORLO_HERE(function), wanted, DefaultSpaceConfig::add, defaultSpaceConfigOfTestProject, error);
    });
}

ProjectPtr ProjectManager::CreateProjectById(const std::wstring& name, ProjectStatus status, const std::wstring& projectId,
                                             const std::wstring& templateId)
{
    constexpr const char* function = "orlo::ProjectManager::CreateProjectById";
    return CallFrame(ORLO_HERE(function)).runAlone([&](ErrorCode& error) -> ProjectPtr {
        if (!isGuid(projectId))
            return nullptr;
        ORLOHTTPPayloadProject wanted = projectNamed(name, status);
        wanted.id = projectId;
        wanted.templateId = templateId;
        return createProject(ORLO_HERE(function), wanted, unlessFromTemplate(templateId), defaultSpaceConfigOfTestProject, error);
    });
}

ProjectManager::Projects ProjectManager::GetAllProjects(ErrorCode& error)
{
    return listProjects(ProjectScenario::Default, error);
}

ProjectManager::Projects ProjectManager::GetOwnerProjects(ErrorCode& error)
{
    return listProjects(ProjectScenario::Owner, error);
}

ProjectManager::Projects ProjectManager::GetArchivedProjects(ErrorCode& error)
{
    return listProjects(ProjectScenario::Archive, error);
}

ProjectManager::Projects ProjectManager::listProjects(ProjectScenario scenario, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetAllProjects")).run(error, [&] {
        Projects projects;
        if (auto records = fetched(&OrloWebService::GetAllProjects, error, textOf(scenario)))
            appendProjects(std::move(*records), projects);
        return projects;
    });
}

bool ProjectManager::GetProjectByStatus(ProjectStatus status, Projects& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetProjectByStatus")).run(error, [&] {
        if (status == ProjectStatus::Unknown)
            return false;
        auto records = fetched(&OrloWebService::GetProjectsByStatus, error, projectStatusTexts().textOf(status));
        if (!records)
            return false;
        appendProjects(std::move(*records), out);
        return true;
    });
}

bool ProjectManager::GetSampleProjects(Projects& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetSampleProjects")).run(error, [&] {
        auto records = fetched(&OrloWebService::GetSampleProjects, error);
        if (!records)
            return false;
        appendProjects(std::move(*records), out);
        return true;
    });
}

std::vector<std::shared_ptr<DatasetInfo>> ProjectManager::GetDatasetInfosInFolder(const std::wstring& folderId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetDatasetInfosInFolder")).runDirect(error, [&] {
        std::vector<std::shared_ptr<DatasetInfo>> infos;
        std::vector<http::ORLOHTTPPayloadDataset> records;
        if (OrloWebService::GetDataSetsByFolder(error, records, folderId)) {
            for (const http::ORLOHTTPPayloadDataset& record : records)
                infos.push_back(std::make_shared<DatasetInfo>(toDatasetInfo(record)));
        }
        return infos;
    });
}

ProjectPtr ProjectManager::GetProjectByDatasetId(const std::string& datasetId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetProjectByDatasetId")).run(error, [&]() -> ProjectPtr {
        const std::wstring projectId = retried(&OrloWebService::getProjectIdByDataset, error, datasetId);
        if (projectId.empty()) {
            log::error(L"Failed to get project id");
            return nullptr;
        }
        return ICollaborationProject::Load(projectId);
    });
}

SpecialtyType ProjectManager::GetSpecialtyTypeById(const std::wstring& specialtyId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetSpecialtyTypeById")).run(error, [&] {
        {
            const std::lock_guard lock(m_cacheMutex);
            if (const auto known = specialtyTypes.find(specialtyId); known != specialtyTypes.end())
                return known->second;
        }
        // Intended: a lookup that failed is remembered as Unknown too.
        const SpecialtyType type = GetSpecialtyType(specialtyId, error);
        const std::lock_guard lock(m_cacheMutex);
        specialtyTypes[specialtyId] = type;
        return type;
    });
}

SpecialtyType ProjectManager::GetSpecialtyType(const std::wstring& specialtyId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetSpecialtyType")).runDirect(error, [&] {
        http::ORLOHTTPPayloadSpecialty specialty;
        if (!OrloWebService::GetSpecialty(error, specialty, specialtyId))
            return SpecialtyType::Unknown;
        return specialtyTexts().valueOf(specialty.type);
    });
}

DatasetInfo ProjectManager::GetDatasetInfo(const std::string& datasetId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetDatasetInfo")).runDirect(error, [&] {
        DatasetInfo info;
        OrloWebService::GetDatasetInfo(error, info, datasetId);
        return info;
    });
}

DatasetInfo ProjectManager::GetDatasetInfoByModelingId(const std::string& modelingId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetDatasetInfoByModelingId")).runDirect(error, [&] {
        DatasetInfo info;
        OrloWebService::GetDatasetInfoByModelingId(error, info, modelingId);
        return info;
    });
}

bool ProjectManager::GetResourceStatus(ResourceStatus& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetResourceStatus")).run(error, [&] {
        const auto limits = fetched(&OrloWebService::GetResourceLimit, error);
        if (!limits) {
            log::error(L"OrloWebService::GetResourceLimit not success.");
            return false;
        }
        ResourceStatus status;
        status.projectNumber = limits->first;
        status.spaceSize = limits->second;
        const Projects owned = GetOwnerProjects();
        status.projectCount = static_cast<int>(owned.size());
        for (const ProjectPtr& project : owned)
            status.spaceUsed = boundedSum(status.spaceUsed, project->GetSize());
        out = status;
        return true;
    });
}

ProjectPtr ProjectManager::GetProjectByModelingId(const std::string& modelingId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ProjectManager::GetProjectByModelingId")).run(error, [&]() -> ProjectPtr {
        {
            const std::lock_guard lock(m_cacheMutex);
            if (const auto known = projectsByModelingId.find(modelingId); known != projectsByModelingId.end())
                return known->second;
        }
        const std::wstring projectId = retried(&OrloWebService::getProjectIdByModelingId, error, modelingId);
        if (projectId.empty()) {
            log::error(L"Failed to get project id by modeling id :" + utils::toWstring(modelingId));
            return nullptr;
        }
        ProjectPtr project = ICollaborationProject::Load(projectId);
        // Intended: only the last project looked up is remembered, one that could not be loaded too.
        const std::lock_guard lock(m_cacheMutex);
        projectsByModelingId.clear();
        projectsByModelingId.emplace(modelingId, project);
        return project;
    });
}

namespace HttpClient {

bool deleteProject(const std::wstring& projectId)
{
    return CallFrame(ORLO_HERE("orlo::HttpClient::deleteProject")).runDirectAlone([&](ErrorCode& error) {
        return OrloWebService::DeleteProject(error, projectId);
    });
}

} // namespace HttpClient

} // namespace orlo
