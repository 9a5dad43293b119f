#include "Project.h"

#include "../Frame/CallFrame.h"
#include "../Frame/DroppedError.h"
#include "../Frame/Retried.h"
#include "../NetworkProject/Projects/ProjectTexts.h"
#include "../NetworkProject/Projects/ProjectWeb.h"

#include <BaseCommon/Text.h>

namespace orlo {

using http::ORLOHTTPPayloadProject;

ICollaborationProject::ICollaborationProject() = default;
ICollaborationProject::~ICollaborationProject() = default;

ICollaborationFolder::ICollaborationFolder() = default;
ICollaborationFolder::~ICollaborationFolder() = default;

std::shared_ptr<ICollaborationProject> ICollaborationProject::Load(const std::wstring& projectId, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::ICollaborationProject::Load")).run(error, [&]() -> std::shared_ptr<ICollaborationProject> {
        auto record = fetched(&OrloWebService::GetProject, error, projectId);
        if (!record)
            return nullptr;
        record->id = projectId;
        const auto properties = std::make_shared<const StandardProperties>(toStandardProperties(record->standardProperties));
        const auto project = toProject(std::move(*record));
        project->setStandardProperties(properties);
        return project;
    });
}

std::shared_ptr<ICollaborationProject> ICollaborationProject::Load(const std::wstring& projectId)
{
    return Load(projectId, DroppedError());
}

Project::Project(std::wstring id, std::wstring name, std::wstring creationTime, std::wstring description, ProjectStatus status,
                 ProjectGridType gridType, std::int64_t size)
    : m_id(std::move(id)),
      m_name(std::move(name)),
      m_creationTime(std::move(creationTime)),
      m_description(std::move(description)),
      m_status(status),
      m_gridType(gridType),
      m_size(size)
{}

void Project::setStandardProperties(std::shared_ptr<const StandardProperties> properties)
{
    m_standardProperties = std::move(properties);
}

bool Project::GetProjectStandardProperties(StandardProperties& out, ErrorCode& error)
{
    return CallFrame(ORLO_HERE("orlo::Project::GetProjectStandardProperties")).run(error, [&] {
        // Two first calls at once both read, and the later store wins.
        auto properties = std::atomic_load(&m_standardProperties);
        if (!properties) {
            const auto record = fetched(&OrloWebService::GetProject, error, m_id);
            if (!record)
                return false;
            properties = std::make_shared<const StandardProperties>(toStandardProperties(record->standardProperties));
            std::atomic_store(&m_standardProperties, properties);
        }
        out = *properties;
        return true;
    });
}

std::wstring Project::GetId() const
{
    return m_id;
}

std::wstring Project::GetName() const
{
    return m_name;
}

std::int64_t Project::GetSize() const
{
    return m_size;
}

ProjectStatus Project::GetStatus() const
{
    return m_status;
}

ProjectGridType Project::GetGridType() const
{
    return m_gridType;
}

std::shared_ptr<Project> toProject(ORLOHTTPPayloadProject&& record)
{
    return std::make_shared<Project>(std::move(record.id), std::move(record.name), std::move(record.creationTime),
                                     std::move(record.description), record.status, record.gridType, record.size);
}

StandardProperties toStandardProperties(const std::vector<http::ORLOProjectStandardProperty>& records)
{
    StandardProperties properties;
    properties.reserve(records.size());
    for (const http::ORLOProjectStandardProperty& record : records)
        properties.push_back({record.propertyId, standardPropertyTypes().valueOf(utils::toWstring(record.valueType)), record.value});
    return properties;
}

} // namespace orlo
