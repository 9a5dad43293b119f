#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orlo::platform {

/// What can be put into a platform's store, and what can be read out of it. The functions are those of `LocalPlatform::change` and, where
/// the world is const, of `LocalPlatform::ask`; each stands in the source of its family below Routes. All text is UTF-8. What can't be done
/// throws `Refusal`.

struct World;

// Users and accounts

struct User
{
    std::string userId{};
    std::string accountId{}; ///< Owner of what the user creates, and the {userId} of the permission path.
    std::string accessToken{};
};

/// A token that is known already changes hands, and is good again.
void addUser(World& world, const User& user);
/// A revoked token gets the status 401.
void setRevoked(World& world, const std::string& accessToken, bool revoked);
/// In so many seconds of the platform's clock; 0 or less: at once.
void expireTokenIn(World& world, const std::string& accessToken, std::int64_t seconds);
/// Limits of an organisation's account, as "/resource/limit" tells them; a further project than `projectNumber` is refused.
void setQuota(World& world, const std::string& accountId, int projectNumber, int spaceSize);
/// An account without limits ("data": null), which every account is at first.
void setPersonal(World& world, const std::string& accountId);

// Projects

struct ProjectSeed
{
    std::string name{};
    std::string ownerAccountId{};
    std::string id{}; ///< Empty: a new one is made.
    std::string status = "Ongoing";
    std::string description{};
    std::string gridType{}; ///< "TYPE_ONE", "TYPE_TWO" or empty: no key in the answer.
    std::int64_t size = 0;
    bool archived = false;
    bool sample = false;
    std::string templateId{};
};

struct SpecialtySeed
{
    std::string projectId{};
    std::string type{};
    std::string name{};
    std::string id{}; ///< Empty: a new one is made.
};

/// Returns the id. The project gets a root folder, the default folders below it, and a team with its folder.
std::string addProject(World& world, const ProjectSeed& project);
/// `jsonArray`: the value of "standardProperties", sent as it is. Empty text: no key in the answer.
void setStandardProperties(World& world, const std::string& projectId, const std::string& jsonArray);
/// "TYPE_ONE", "TYPE_TWO"; empty text: no key in the answer.
void setGridType(World& world, const std::string& projectId, const std::string& gridType);
void setProjectSize(World& world, const std::string& projectId, std::int64_t size);
void setArchived(World& world, const std::string& projectId, bool archived);
/// Returns the id.
std::string addSpecialty(World& world, const SpecialtySeed& specialty);
/// The account's row for one resource; an empty list takes it away. `permissionTypes`: "Read", "Write", "SoftWrite".
void grantPermission(World& world, const std::string& projectId, const std::string& accountId, const std::string& resource,
                     const std::vector<std::string>& permissionTypes);

// Folders

struct FolderSeed
{
    std::string parentId{}; ///< The project of the folder is that of its parent.
    std::string name{};
    std::string folderType = "OtherFiles";
    std::string teamId{};
    std::string id{}; ///< Empty: a new one is made.
};

/// Returns the id.
std::string addFolder(World& world, const FolderSeed& folder);

// Teams. A user is known to them by the id of his account.

struct TeamSeed
{
    std::string projectId{};
    std::string name{};
    std::string id{}; ///< Empty: a new one is made.
    std::string description{};
    std::string status = "Working";
};

/// Returns the id. The team gets a folder of its own, and the project's owner for a member.
std::string addTeam(World& world, const TeamSeed& team);
/// Whoever is a member already stays one.
void addMember(World& world, const std::string& teamId, const std::string& accountId);

/// One team lets another see a resource of its own: a "Folder" or a "DataSet".
struct TrustSeed
{
    std::string teamId{};
    std::string trustedTeamId{};
    std::string resourceType{};
    std::string resourceId{};
};

void addTrust(World& world, const TrustSeed& trust);

struct SharedVersion
{
    std::string datasetId{};
    int version = 0;
};

/// One team hands versions of its datasets to another.
struct ShareSeed
{
    std::string shareId{};    ///< The team that shares.
    std::string consumedId{}; ///< The team that receives.
    std::string name{};
    std::vector<SharedVersion> contents{};
    std::string status = "Shared"; ///< Or "Temporary", "Consumed".
    std::string id{};              ///< Empty: a new one is made.
};

/// Returns the id of the record.
std::string addShare(World& world, const ShareSeed& share);

// Messages

/// What a user is told. The receiver is the id of an account, or of a user.
struct MessageSeed
{
    std::string receiver{};
    std::string title{};
    std::string content{};
    std::string projectId{};
    std::string datasetId{};
    std::string resourceType{};
    std::string resourceId{};
    std::string senderId{};
    std::string senderAction{};
    std::string messageType = "BUSINESS"; ///< Or "SYSTEM".
};

/// Returns the id. The message is unread.
int addMessage(World& world, const MessageSeed& message);

// Datasets

struct DatasetSeed
{
    std::string name{};
    std::string folderId{}; ///< Folder or team is needed; the linked folder of the team is taken when only the team is given.
    std::string teamId{};
    std::string type = "workunit";
    std::string specialtyId{};
    std::string ownerId{};
    std::string description{};
    std::string id{};                ///< Empty: a new one is made.
    std::string modelingDatasetId{}; ///< Empty: a new one is made.
};

/// Returns the id.
std::string addDataset(World& world, const DatasetSeed& dataset);

// Fonts

struct FontSeed
{
    std::string projectId{};
    std::string name{};
    std::string bytes{}; ///< The font file; "resourceBytes" is its length.
    std::string fileType = "ttf";
    std::string fontFrom = "Project";
    std::string uploader{};
    std::string id{}; ///< Empty: a new one is made.
};

/// Returns the id.
std::string addFont(World& world, const FontSeed& font);

// Files

/// A file in the store: an upload whose bytes have come, or a seeded one.
struct StoredFile
{
    std::string remotePath{};
    std::string fileName{};
    std::string fileId{}; ///< Uploads by Arkiv only, as is `versionIndex`.
    int versionIndex = 0;
    std::int64_t length = 0;
};

/// Puts a file into the store under a remote path of the caller's choice, in place of the one that has it.
void addFile(World& world, const std::string& remotePath, const std::string& bytes);
/// The file that the seed `path` names for ".../blockFiles/readSAS". Returns the path of its signed addresses, for faults.
std::string addDatasetFile(World& world, const std::string& datasetId, const std::string& path, const std::string& bytes);
/// The bytes stored under a remote path ("fileOSSPath"); throws if there is none.
std::string contentOf(const World& world, const std::string& remotePath);
/// In the order in which they were asked for. Files of datasets and fonts don't count.
std::vector<StoredFile> storedFiles(const World& world);

// Components

/// A place in the tree of components.
struct ComponentCategorySeed
{
    std::string code{};
    std::string name{};
    std::string parentCode{}; ///< Empty: at the top.
    int major = 0;            ///< The number of the specialty that uses it, as clients tell it.
};

/// One form in which a component comes.
struct FamilyTypeSeed
{
    std::string name{};
    std::string parameters = "{}"; ///< A JSON object.
};

/// A version of a component of the public catalogue, from which projects take theirs.
struct PublicComponentSeed
{
    std::string name{};
    std::string categoryCode{};
    std::vector<FamilyTypeSeed> familyTypes{};
    std::string id{}; ///< Empty: a new component is made. That of a component which is there: it gets its next version.
};

/// The small catalogue that the program begins with; where there are categories already, nothing happens.
void addStandardComponents(World& world);
void addComponentCategory(World& world, const ComponentCategorySeed& category);
/// Returns the id, a number.
std::string addPublicComponent(World& world, const PublicComponentSeed& component);

// Templates

/// A template of the public library, with one file.
struct PublicTemplateSeed
{
    std::string name{};
    std::string bytes{};
    std::string specialty = "Unknown";
    std::string id{}; ///< Empty: a new one is made.
};

/// A template that a project offers: of the public library with `templateId`, otherwise of its own library, with the bytes of a new file.
struct SamplePlateSeed
{
    std::string projectId{};
    std::string name{};
    std::string templateId{};
    std::string bytes{};
    std::string specialty = "Unknown";
    std::string id{}; ///< Empty: a new one is made.
};

/// What a dataset was started with: a template that its project offers.
struct SampleFileSeed
{
    std::string datasetId{};
    std::string samplePlateId{};
    std::string type = "dwt"; ///< The extension of the local file.
    std::string id{};         ///< Empty: a new one is made.
};

/// The small public library that the program begins with; what is there already stays as it is.
void addStandardTemplates(World& world);
/// Returns the id.
std::string addPublicTemplate(World& world, const PublicTemplateSeed& seed);
/// A further file of a template of the public library.   Returns the path of its signed addresses, for faults.
std::string addPublicTemplateFile(World& world, const std::string& templateId, const std::string& name, const std::string& bytes);
/// Returns the id.
std::string addSamplePlate(World& world, const SamplePlateSeed& seed);
/// Returns the id. A dataset may get a second one, which its client has to cope with.
std::string addSampleFile(World& world, const SampleFileSeed& seed);

// Modules. Their space is a project's ("projects" and its id) or an account's ("accounts").

struct ModuleCategorySeed
{
    std::string spaceType{};
    std::string space{};
    std::string resourceType{};
    std::string tree{};
    std::string name{};
    std::string parentId{}; ///< Empty: on top.
    std::string id{};       ///< Empty: a new one is made.
};

/// A version of a module.
struct StoredModule
{
    std::string id{};
    int version = 0;
    std::string categoryId{};
    std::string name{};
    std::string applicationType{};
    std::string fileKey{}; ///< The remote path of its file.
};

/// Returns the id.
std::string addModuleCategory(World& world, const ModuleCategorySeed& category);
/// In the order in which the modules were made, each from its first version on.
std::vector<StoredModule> storedModules(const World& world);

// Archive packages

/// A numbered bundle that is assigned to a project.
struct ArchivePackageSeed
{
    std::string projectId{};
    std::string name{};
    std::string id{}; ///< Empty: a new one is made.
    std::string description{};
    std::string receiver{};
    std::string receiverName{};
    std::string sharer{};
    std::string sharerName{};
    bool enabled = true;
};

/// A version of an integrate package, which archive packages name as a unit.
struct ArchiveUnitSeed
{
    std::string projectId{};
    std::string name{};
    std::vector<int> datasetVersions{}; ///< Ids of versions, not their numbers.
    std::vector<std::string> standardCodes{};
    std::string packageId{}; ///< The integrate package; one that isn't there is made, with a new id for an empty one.
    std::string status = "Success";
};

/// Returns the id.
std::string addArchivePackage(World& world, const ArchivePackageSeed& package);
/// Returns the id of the version.
int addArchiveUnit(World& world, const ArchiveUnitSeed& unit);
/// Gives a package its next version, with these versions of units. Returns its number.
int addArchiveVersion(World& world, const std::string& packageId, const std::vector<int>& units);

// Translations

/// What "/v1/upload" was asked for.
struct Translation
{
    std::string dataSetId{};
    int versionId = 0;
    std::string toType{};
};

/// In the order of their calls.
std::vector<Translation> translations(const World& world);

} // namespace orlo::platform
