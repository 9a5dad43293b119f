#pragma once

#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Projects/ProjectRecords.h>
#include <OrloProjectManager/Projects/Specialty.h>

#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class ICollaborationProject;

/// The way to the user's projects, and to projects and datasets of which only some id is known.
///
/// Every operation blocks its caller and may be called from any thread. "Retried" requests are repeated by the retry
/// policy; the numbers of requests below are those of a call that succeeds at once.
/// The form without an ErrorCode does the same and drops the reason of a failure.
class ORLO_PROJECT_API ICollaborationProjectManager
{
public:
    using Projects = std::vector<std::shared_ptr<ICollaborationProject>>;

    /// The one manager of the process; never null, owned by the library.
    static ICollaborationProjectManager* Get();

    ICollaborationProjectManager();
    virtual ~ICollaborationProjectManager();

    ICollaborationProjectManager(const ICollaborationProjectManager&) = delete;
    ICollaborationProjectManager& operator=(const ICollaborationProjectManager&) = delete;

    /// Creates a project with the default space configuration. A configuration that can't be stored is logged and does
    /// not undo the project.
    /// name: not empty.   status: Ongoing, Suspended or Completed.
    /// Returns: the project; null on failure.
    /// Errors: 0xE8000001 empty name or unknown status, nothing is sent; 0xE8000002 transport or exception; a negative
    /// value with the platform's answer as message for an error status.   Requests: two, retried.
    virtual std::shared_ptr<ICollaborationProject> CreateProject(const std::wstring& name, ProjectStatus status, ErrorCode& error) = 0;

    /// As above from a template; with a template the project gets no default space configuration. The reason of a
    /// failure is logged only.
    virtual std::shared_ptr<ICollaborationProject> CreateProject(const std::wstring& name, ProjectStatus status,
                                                                 const std::wstring& templateId) = 0;

    /// Creates a project under an id of the caller's.
    /// projectId: a GUID of 36 characters; any other text gives null, a log line and no error value.
    virtual std::shared_ptr<ICollaborationProject> CreateProjectById(const std::wstring& name, ProjectStatus status,
                                                                     const std::wstring& projectId, ErrorCode& error) = 0;
    virtual std::shared_ptr<ICollaborationProject> CreateProjectById(const std::wstring& name, ProjectStatus status,
                                                                     const std::wstring& projectId, const std::wstring& templateId) = 0;

    /// The user's projects, in the order of the platform.
    /// Returns: empty on failure.   Errors: as CreateProject, without 0xE8000001.   Requests: one, retried.
    virtual Projects GetAllProjects(ErrorCode& error) = 0;
    virtual Projects GetAllProjects() = 0;
    /// As GetAllProjects, for the projects that the user owns.
    virtual Projects GetOwnerProjects(ErrorCode& error) = 0;
    virtual Projects GetOwnerProjects() = 0;
    /// As GetAllProjects, for archived projects.
    virtual Projects GetArchivedProjects(ErrorCode& error) = 0;
    virtual Projects GetArchivedProjects() = 0;

    /// Appends the user's projects of one status to `out`.
    /// Returns: false on failure, and for Unknown, which sends nothing.   Requests: one, retried.
    virtual bool GetProjectByStatus(ProjectStatus status, Projects& out, ErrorCode& error) = 0;
    virtual bool GetProjectByStatus(ProjectStatus status, Projects& out) = 0;

    /// Appends the platform's sample projects to `out`.   Requests: one, retried.
    virtual bool GetSampleProjects(Projects& out, ErrorCode& error) = 0;
    virtual bool GetSampleProjects(Projects& out) = 0;

    /// The datasets of a folder, in the order of the platform.
    /// folderId: opaque id.   Returns: empty on failure.   Requests: one, not retried.
    virtual std::vector<std::shared_ptr<DatasetInfo>> GetDatasetInfosInFolder(const std::wstring& folderId, ErrorCode& error) = 0;
    virtual std::vector<std::shared_ptr<DatasetInfo>> GetDatasetInfosInFolder(const std::wstring& folderId) = 0;

    /// The project that a dataset belongs to.
    /// Returns: null on failure. A failure to load the project that was found is logged and not reported in `error`.
    /// Requests: two, retried.
    virtual std::shared_ptr<ICollaborationProject> GetProjectByDatasetId(const std::string& datasetId, ErrorCode& error) = 0;
    virtual std::shared_ptr<ICollaborationProject> GetProjectByDatasetId(const std::string& datasetId) = 0;

    /// The type of a specialty. The answer is remembered for the life of the process, Unknown after a failure too.
    /// Requests: one at the first call for an id, not retried; none afterwards.
    virtual SpecialtyType GetSpecialtyTypeById(const std::wstring& specialtyId, ErrorCode& error) = 0;
    virtual SpecialtyType GetSpecialtyTypeById(const std::wstring& specialtyId) = 0;

    /// Returns: an empty record on failure.   Requests: one, not retried.
    virtual DatasetInfo GetDatasetInfo(const std::string& datasetId, ErrorCode& error) = 0;
    virtual DatasetInfo GetDatasetInfo(const std::string& datasetId) = 0;
    virtual DatasetInfo GetDatasetInfoByModelingId(const std::string& modelingId, ErrorCode& error) = 0;

    /// The user's quota. False for a personal account, which has none, and on failure; `out` then stays as it was.
    /// Requests: two, retried.
    virtual bool GetResourceStatus(ResourceStatus& out, ErrorCode& error) = 0;
    virtual bool GetResourceStatus(ResourceStatus& out) = 0;

    /// The project that a modeling id belongs to. The last project found is remembered and given again for the same id
    /// without a request.
    /// Returns: null on failure.   Requests: two, retried.
    virtual std::shared_ptr<ICollaborationProject> GetProjectByModelingId(const std::string& modelingId, ErrorCode& error) = 0;
};

namespace HttpClient {

/// Deletes a project for good. The reason of a failure is logged only.   Requests: one, not retried.
ORLO_PROJECT_API bool deleteProject(const std::wstring& projectId);

} // namespace HttpClient

} // namespace orlo
