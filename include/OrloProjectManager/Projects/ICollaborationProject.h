#pragma once

#include <BaseCommon/HttpMessage.h>
#include <OrloProjectManager/Design/ConfigType.h>
#include <OrloProjectManager/Export.h>
#include <OrloProjectManager/Projects/DatasetRecords.h>
#include <OrloProjectManager/Projects/ProjectItemConfig.h>
#include <OrloProjectManager/Projects/ProjectRecords.h>
#include <OrloProjectManager/Projects/Specialty.h>
#include <OrloProjectManager/Projects/StandardProperty.h>
#include <OrloProjectManager/Teams/CollaborationTeamInfo.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlo {

class ErrorCode;
class IArchivePackage;
class IAxisGrid;
class ICollaborationFolder;
class IProjectFont;
class ISpaceConfig;

/// What a user may do with a resource of a project.
enum class PermissionType : int { None = 0, Read = 1, Write = 2, SoftWrite = 3 };

/// One project. Its fields are those of the moment when it was read; they are never refreshed.
///
/// Every operation but the getters blocks its caller. An object is used from one thread at a time.
/// The form without an ErrorCode does the same and drops the reason of a failure.
class ORLO_PROJECT_API ICollaborationProject
{
public:
    using Folders = std::vector<std::shared_ptr<ICollaborationFolder>>;

    /// Reads a project by its id.
    /// Returns: null on failure.   Errors: 0xE8000002 transport or exception; a negative value with the platform's answer
    /// as message for an error status.   Requests: one, retried.   Threads: any.
    [[nodiscard]] static std::shared_ptr<ICollaborationProject> Load(const std::wstring& projectId, ErrorCode& error);
    [[nodiscard]] static std::shared_ptr<ICollaborationProject> Load(const std::wstring& projectId);

    ICollaborationProject();
    virtual ~ICollaborationProject();

    ICollaborationProject(const ICollaborationProject&) = delete;
    ICollaborationProject& operator=(const ICollaborationProject&) = delete;

    virtual std::wstring GetId() const = 0;
    virtual std::wstring GetName() const = 0;
    /// Bytes.
    virtual std::int64_t GetSize() const = 0;

    /// Builds the folder tree anew and returns its roots.
    /// Requests: one, retried, and one for the datasets of each folder.
    virtual Folders GetFolders(ErrorCode& error) = 0;
    virtual Folders GetFolders() = 0;
    /// The same roots as raw pointers, which live until the next call on this project.
    virtual std::vector<ICollaborationFolder*> GetFolders(ErrorCode& error) const = 0;
    virtual std::vector<ICollaborationFolder*> GetFolders() const = 0;
    /// The tree below the project's root folder, the root included.   Requests: two, retried, and one for each folder.
    virtual bool GetProjectFolders(Folders& out, ErrorCode& error) = 0;
    virtual ProjectStatus GetStatus() const = 0;
    /// The first folder of a type in the tree of a team. The pointer lives until the next call on this project.
    virtual ICollaborationFolder* GetTeamFolder(const std::wstring& teamId, int folderType) = 0;
    virtual ProjectGridType GetGridType() const = 0;

    /// One version of the axis grid as text: the platform's whole answer, an object with "version", "configValue" and "id"; or the
    /// document alone, schema version 3, where the project remembers a grid of that version. A caller must take both.
    /// version: -1 for the last one.
    /// Requests: one, retried; none for a grid that is remembered. With -1 and a remembered grid one more, for the versions.
    virtual bool GetAxisGridConfig(int version, std::string& configText, ErrorCode& error) = 0;
    /// The same as an object, which the project remembers. The pointer lives until this operation fetches another one, or fails to.
    /// Returns: null on failure. A document that can't be read is a failure too; it is logged and leaves `error` clear.
    virtual IAxisGrid* GetAxisGridConfig(int version, ErrorCode& error) = 0;
    virtual IAxisGrid* GetAxisGridConfig(int version) = 0;
    /// Stores a grid as a new version. What the project remembers stays as it is.
    /// Returns: false on failure, also for a grid with a number that is not finite, of which nothing is sent.   Requests: one, retried.
    virtual bool UpdateAxisGrid(IAxisGrid* grid, ErrorCode& error) = 0;
    virtual bool UpdateAxisGrid(IAxisGrid* grid) = 0;

    /// One version of the space configuration, as the whole answer of the platform.   Requests: one, retried.
    virtual bool GetSpaceConfig(int version, std::wstring& configText, ErrorCode& error) = 0;
    /// The same as an object. A document of another schema version gives an object without items.
    virtual std::shared_ptr<ISpaceConfig> GetSpaceConfig(int version, ErrorCode& error) = 0;
    virtual std::shared_ptr<ISpaceConfig> GetSpaceConfig(int version) = 0;
    /// In the order of the platform.   Requests: one, retried.
    virtual std::vector<int> GetSpaceConfigVersions(ErrorCode& error) = 0;
    virtual std::vector<int> GetSpaceConfigVersions() = 0;

    /// In the order of the platform.   Requests: one, retried.
    virtual std::vector<int> GetAxisGridConfigVersions(ErrorCode& error) = 0;
    virtual std::vector<int> GetAxisGridConfigVersions() = 0;

    /// Replaces the content of `out` by the project's archive packages, with the units of their newest versions and the datasets of these;
    /// nothing is remembered. Packages without an id are left out.
    /// Returns: false on failure, with `out` empty; also for a project without packages and for packages without units, which the log
    /// tells.   Errors: 0xE8000002 transport or exception; a negative value for an error status; of several failures the first. Clear
    /// where a question was answered with a status below 400 that isn't 200, or where there was nothing to ask for.
    /// Requests: five, of which the last one alone is retried; four where no package names a unit, three where there is no package.
    virtual bool GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>& out, ErrorCode& error) = 0;
    virtual bool GetArchivePackageList(std::vector<std::shared_ptr<IArchivePackage>>& out) = 0;

    /// What the signed-in user may do, by resource.   Requests: one, not retried.
    virtual bool GetPermissionTypes(std::map<std::wstring, PermissionType>& out, ErrorCode& error) = 0;
    virtual bool GetPermissionTypes(std::map<std::wstring, PermissionType>& out) = 0;

    /// Replaces the content of `out` by the project's fonts.   Requests: one, retried.
    virtual bool GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>& out, ErrorCode& error) = 0;
    virtual bool GetProjectFonts(std::vector<std::shared_ptr<IProjectFont>>& out) = 0;

    /// Read once for each object and remembered.   Requests: one at the first call, retried; none afterwards.
    virtual bool GetProjectStandardProperties(std::vector<ProjectStandardProperty>& out, ErrorCode& error) = 0;
    virtual bool GetProjectStandardProperties(std::vector<ProjectStandardProperty>& out) = 0;

    /// The id of the project's specialty of each type; of several of a type the last one.   Requests: one, retried.
    virtual bool GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>& out, ErrorCode& error) = 0;
    virtual bool GetSpecialtyTypes(std::map<SpecialtyType, std::wstring>& out) = 0;
    /// Returns: the new specialty's id; empty on failure.   Requests: one, retried.
    virtual std::wstring CreateSpecialty(SpecialtyType type, const std::wstring& name, ErrorCode& error) = 0;

    /// Requests: one, retried.
    virtual bool GetTeams(std::vector<CollaborationTeamInfo>& out, ErrorCode& error) = 0;

    /// Appends the project's datasets of one status. The name is spelled so in the platform's terms.
    /// Returns: false on failure, and for a status without a text, which sends nothing.   Requests: one, retried.
    virtual bool GetDatasetBySatatus(DatasetStatus status, std::vector<DatasetInfo>& out, ErrorCode& error) = 0;
    /// Returns: the new dataset; an empty record on failure.
    /// Errors: 0xE8000001 empty name or team, nothing is sent.   Requests: one, retried.
    virtual DatasetInfo CreateDataset(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                      const std::wstring& ownerId, ErrorCode& error) = 0;
    virtual DatasetInfo CreateDataset(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                      const std::wstring& ownerId) = 0;
    virtual DatasetInfo CreateDatasetById(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                          const std::wstring& ownerId, const std::string& datasetId, ErrorCode& error) = 0;
    virtual DatasetInfo CreateDatasetById(const std::wstring& name, const std::wstring& teamId, const std::wstring& specialtyId,
                                          const std::wstring& ownerId, const std::string& datasetId) = 0;

    // Building items: parts of the project's design, each with versions of its own and up to three configurations. All items of a project
    // move under one revision. A writer names the one that it has read, from GetLatestBuildingItems; a stale one the platform refuses.
    // An item's ids are the platform's and opaque, contents are the host's JSON.
    //
    // All that follow: Returns: false on failure, with what they would fill left as it was.   Errors: 0xE8000002 transport or exception; a
    // negative value with the platform's answer as message for an error status; none for another status than 200 and for an answer
    // without its data.   Requests: one, retried.   Threads: one at a time.
    //
    // Forms with an HttpMessage, in place of an ErrorCode, fill it with the platform's code and words, as for a stale revision; it stays
    // as it was where the platform says nothing.

    /// The items as they are now, with the revision for the next writer; 0 where there is none.
    /// Returns: false too where the platform tells no revision. After a failure there are no items, and the revision is -1.
    virtual bool GetLatestBuildingItems(std::vector<ProjectItemConfig>& items, int& revision, ErrorCode& error) = 0;
    virtual bool GetLatestBuildingItems(std::vector<ProjectItemConfig>& items, int& revision) = 0;
    /// Appends the items as they were at a revision.
    virtual bool GetBuildingItems(std::vector<ProjectItemConfig>& items, int revision, ErrorCode& error) = 0;
    virtual bool GetBuildingItems(std::vector<ProjectItemConfig>& items, int revision) = 0;
    /// Adds an item.
    /// subItemId: filled with the new item's.   Returns: false too where the platform doesn't tell it.
    /// Errors: also 0xE8000001 a content that is no JSON or nested deeper than 1000, nothing is sent. An attempt whose answer was lost
    /// may have been carried out; its repetition is refused then, since the revision is another.
    virtual bool AddBuildingItem(std::wstring& subItemId, int revision, const std::wstring& content, ErrorCode& error) = 0;
    virtual bool AddBuildingItem(http::HttpMessage& message, std::wstring& subItemId, int revision, const std::wstring& content) = 0;
    /// Gives an item a new version.   Errors: as AddBuildingItem.
    virtual bool UpdateBuildingItem(int revision, const std::wstring& subItemId, const std::wstring& content, ErrorCode& error) = 0;
    virtual bool UpdateBuildingItem(http::HttpMessage& message, int revision, const std::wstring& subItemId,
                                    const std::wstring& content) = 0;
    /// Takes an item out of the project.
    virtual bool DeleteBuildingItem(int revision, const std::wstring& subItemId, ErrorCode& error) = 0;
    virtual bool DeleteBuildingItem(http::HttpMessage& message, int revision, const std::wstring& subItemId) = 0;
    /// Binds a dataset to an item.
    virtual bool AssociateDatasetAndBuildingItem(const std::wstring& datasetId, const std::wstring& subItemId, ErrorCode& error) = 0;
    virtual bool AssociateDatasetAndBuildingItem(const std::wstring& datasetId, const std::wstring& subItemId) = 0;
    /// Appends the ids of the items to which a dataset is bound.
    virtual bool GetBuildingItemIdsByDatasetId(std::vector<std::wstring>& ids, const std::wstring& datasetId, ErrorCode& error) = 0;
    virtual bool GetBuildingItemIdsByDatasetId(std::vector<std::wstring>& ids, const std::wstring& datasetId) = 0;
    /// Appends the ids of the datasets that are bound to an item.
    virtual bool GetDatasetIdsByBuildingItemId(std::vector<std::wstring>& ids, const std::wstring& subItemId, ErrorCode& error) = 0;
    virtual bool GetDatasetIdsByBuildingItemId(std::vector<std::wstring>& ids, const std::wstring& subItemId) = 0;
    /// The newest version of an item, for the type SubItem, or of one of its configurations.
    /// Returns: false too where the platform knows no such configuration, or several.
    virtual bool GetLatestProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type,
                                            ErrorCode& error) = 0;
    virtual bool GetLatestProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type) = 0;
    /// One version of an item, for the type SubItem, or of one of its configurations.
    virtual bool GetProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, int version,
                                      ErrorCode& error) = 0;
    virtual bool GetProjectItemConfig(ProjectItemConfig& config, const std::wstring& subItemId, ConfigType type, int version) = 0;
    /// Gives an item its first configuration of a type: ItemElevationSet, ItemGridConfig or Coordinate.
    /// Errors: also 0xE8000001 a content that is no JSON or nested deeper than 1000, nothing is sent.
    virtual bool CreateProjectItemConfig(const std::wstring& subItemId, ConfigType type, const std::wstring& content, ErrorCode& error) = 0;
    virtual bool CreateProjectItemConfig(http::HttpMessage& message, const std::wstring& subItemId, ConfigType type,
                                         const std::wstring& content) = 0;
    /// Gives a configuration of an item a new version.
    /// version: the one that was read.   Errors: as CreateProjectItemConfig, and 0xE8000001 for SubItem and the types of a project itself,
    /// nothing is sent. Items are written by UpdateBuildingItem.
    virtual bool UpdateProjectItemConfig(const std::wstring& subItemId, ConfigType type, int version, const std::wstring& content,
                                         ErrorCode& error) = 0;
    virtual bool UpdateProjectItemConfig(http::HttpMessage& message, const std::wstring& subItemId, ConfigType type, int version,
                                         const std::wstring& content) = 0;

    /// Takes components of the public catalogue into the project. The platform is told the first two parts of the host's version, too.
    /// ids: for each component its id in the project, and the public one; where a public id stands twice, the last row counts.
    /// Errors: 0xE8000002 transport or exception; a negative value for an error status; clear where the platform doesn't confirm.
    /// Requests: one, retried.
    virtual bool AddComponentsWithIds(const std::map<std::wstring, std::wstring>& ids, ErrorCode& error) = 0;
    virtual bool AddComponentsWithIds(const std::map<std::wstring, std::wstring>& ids) = 0;
};

} // namespace orlo
