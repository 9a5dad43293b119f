#include "Projects.h"

#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"

#include <algorithm>
#include <array>

namespace orlo::platform {

namespace {

constexpr std::array statuses = {"Ongoing", "Suspended", "Completed"};
constexpr std::array gridTypes = {"TYPE_ONE", "TYPE_TWO"};
constexpr std::array specialtyTypes = {"Unknown", "ZOK", "ZIM", "ZUTA", "ZEB"};
constexpr std::array knownPermissions = {"Read", "Write", "SoftWrite"};
constexpr std::array defaultFolders = {"Process", "Published", "ProjectShare", "OtherFiles"};
constexpr const char* defaultTeam = "默认团队";

template <std::size_t Count>
void requireOneOf(const std::array<const char*, Count>& known, const std::string& text, const std::string& what)
{
    if (std::find(known.begin(), known.end(), text) == known.end())
        throw Refusal(400, "unknown " + what + ": " + text);
}

void insertFolder(World& world, const std::string& id, const std::string& projectId, const FolderSeed& folder)
{
    world.tables.run("INSERT INTO folder (id, projectId, parentId, name, folderType, teamId) VALUES (?, ?, ?, ?, ?, ?)", id, projectId,
                     folder.parentId, folder.name, folder.folderType, folder.teamId);
}

void addDefaultTeam(World& world, const std::string& projectId, const std::string& rootId)
{
    const std::string teamId = newId();
    const std::string folderId = newId();
    insertFolder(world, folderId, projectId, FolderSeed{rootId, defaultTeam, "TeamRelated", teamId, {}});
    world.tables.run("INSERT INTO team (id, projectId, name, description, status, linkedFolderId) VALUES (?, ?, ?, '', 'Working', ?)",
                     teamId, projectId, defaultTeam, folderId);
}

void addDefaultFolders(World& world, const std::string& projectId, const std::string& projectName)
{
    const std::string rootId = newId();
    insertFolder(world, rootId, projectId, FolderSeed{{}, projectName, "Root", {}, {}});
    for (const char* type : defaultFolders)
        insertFolder(world, newId(), projectId, FolderSeed{rootId, type, type, {}, {}});
    addDefaultTeam(world, projectId, rootId);
}

void updateProject(World& world, const std::string& projectId, const std::string& assignment, const std::string& value)
{
    requireProject(world, projectId);
    world.tables.run("UPDATE project SET " + assignment + " WHERE id = ?2", value, projectId);
}

} // namespace

std::string freeId(World& world, const std::string& table, const std::string& id)
{
    if (id.empty())
        return newId();
    if (world.tables.text("SELECT id FROM " + table + " WHERE id = ?", id))
        throw Refusal(409, "the id is taken: " + id);
    return id;
}

std::string createProject(World& world, const NewProject& project)
{
    const ProjectSeed& seed = project.seed;
    if (seed.name.empty())
        throw Refusal(400, "a project needs a name");
    requireOneOf(statuses, seed.status, "project status");
    std::string id = freeId(world, "project", seed.id);
    world.tables.run("INSERT INTO project (id, name, description, owner, status, templateId, size, sample, archived, creationTime) "
                     "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     id, seed.name, seed.description, seed.ownerAccountId, seed.status, project.templateId, seed.size,
                     static_cast<int>(project.sample), static_cast<int>(seed.archived), world.clock.text());
    setGridType(world, id, seed.gridType);
    addDefaultFolders(world, id, seed.name);
    return id;
}

void requireRoomForProject(World& world, const std::string& accountId)
{
    const auto limit = world.tables.integer("SELECT projectNumber FROM quota WHERE accountId = ?", accountId);
    const auto owned = world.tables.integer("SELECT COUNT(*) FROM project WHERE owner = ? AND sample = 0", accountId);
    if (limit && *limit >= 0 && owned >= limit)
        throw Refusal(409, "the account's number of projects is used up");
}

void requireProject(World& world, const std::string& projectId)
{
    if (!world.tables.text("SELECT id FROM project WHERE id = ?", projectId))
        throw Refusal(404, "no such project: " + projectId);
}

void requireFolder(World& world, const std::string& folderId)
{
    projectOfFolder(world, folderId);
}

void requireTeamOfProject(World& world, const std::string& teamId, const std::string& projectId)
{
    if (!world.tables.text("SELECT id FROM team WHERE id = ? AND projectId = ?", teamId, projectId))
        throw Refusal(404, "no such team in the project: " + teamId);
}

std::string projectOfFolder(World& world, const std::string& folderId)
{
    auto projectId = world.tables.text("SELECT projectId FROM folder WHERE id = ?", folderId);
    if (!projectId)
        throw Refusal(404, "no such folder: " + folderId);
    return *projectId;
}

void requireWriter(World& world, const std::string& projectId, const std::string& accountId)
{
    const auto allowed = world.tables.text("SELECT id FROM project WHERE id = ?1 AND (owner = ?2 OR EXISTS (SELECT 1 FROM permission "
                                           "WHERE projectId = ?1 AND accountId = ?2 AND permissionTypes LIKE '%Write%'))",
                                           projectId, accountId);
    if (!allowed)
        throw Refusal(403, "the account may not write in this project");
}

std::string createFolder(World& world, const FolderSeed& folder)
{
    if (folder.name.empty())
        throw Refusal(400, "a folder needs a name");
    const std::string projectId = projectOfFolder(world, folder.parentId);
    if (!folder.teamId.empty())
        requireTeamOfProject(world, folder.teamId, projectId);
    std::string id = freeId(world, "folder", folder.id);
    insertFolder(world, id, projectId, folder);
    return id;
}

std::string createSpecialty(World& world, const std::string& projectId, const std::string& type, const std::string& name,
                            const std::string& givenId)
{
    requireOneOf(specialtyTypes, type, "specialty type");
    requireProject(world, projectId);
    std::string id = freeId(world, "specialty", givenId);
    world.tables.run("INSERT INTO specialty (id, projectId, name, description, type) VALUES (?, ?, ?, '', ?)", id, projectId, name, type);
    return id;
}

void setQuota(World& world, const std::string& accountId, int projectNumber, int spaceSize)
{
    world.tables.run("INSERT OR REPLACE INTO quota (accountId, projectNumber, spaceSize) VALUES (?, ?, ?)", accountId, projectNumber,
                     spaceSize);
}

void setPersonal(World& world, const std::string& accountId)
{
    world.tables.run("DELETE FROM quota WHERE accountId = ?", accountId);
}

void grantPermission(World& world, const std::string& projectId, const std::string& accountId, const std::string& resource,
                     const std::vector<std::string>& permissionTypes)
{
    requireProject(world, projectId);
    for (const std::string& type : permissionTypes)
        requireOneOf(knownPermissions, type, "permission type");
    world.tables.run("DELETE FROM permission WHERE projectId = ? AND accountId = ? AND resource = ?", projectId, accountId, resource);
    if (!permissionTypes.empty())
        world.tables.run("INSERT INTO permission (projectId, accountId, resource, permissionTypes) VALUES (?, ?, ?, ?)", projectId,
                         accountId, resource, json::array(permissionTypes));
}

void setStandardProperties(World& world, const std::string& projectId, const std::string& jsonArray)
{
    if (!jsonArray.empty() && !json::isJsonArray(jsonArray))
        throw Refusal(400, "the standard properties must be a JSON array");
    updateProject(world, projectId, "standardProperties = NULLIF(?1, '')", jsonArray);
}

void setGridType(World& world, const std::string& projectId, const std::string& gridType)
{
    if (!gridType.empty())
        requireOneOf(gridTypes, gridType, "grid type");
    updateProject(world, projectId, "gridType = NULLIF(?1, '')", gridType);
}

void setProjectSize(World& world, const std::string& projectId, std::int64_t size)
{
    updateProject(world, projectId, "size = CAST(?1 AS INTEGER)", std::to_string(size));
}

void setArchived(World& world, const std::string& projectId, bool archived)
{
    updateProject(world, projectId, "archived = CAST(?1 AS INTEGER)", archived ? "1" : "0");
}

} // namespace orlo::platform
