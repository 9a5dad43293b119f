#include "Projects.h"

#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Folders.h"
#include "Routes.h"

#include <algorithm>
#include <array>

namespace orlo::platform {

namespace {

constexpr std::array statuses = {"Ongoing", "Suspended", "Completed"};
constexpr std::array gridTypes = {"TYPE_ONE", "TYPE_TWO"};
constexpr std::array specialtyTypes = {"Unknown", "ZOK", "ZIM", "ZUTA", "ZEB"};
constexpr std::array knownPermissions = {"Read", "Write", "SoftWrite"};

void updateProject(World& world, const std::string& projectId, const std::string& assignment, const std::string& value)
{
    requireProject(world, projectId);
    world.tables.run("UPDATE project SET " + assignment + " WHERE id = ?2", value, projectId);
}

Answer grantCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    grantPermission(world, body.filledText("projectId"), body.filledText("accountId"), body.filledText("resource"),
                    body.texts("permissionTypes"));
    return done();
}

Answer addProjectCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    ProjectSeed project;
    project.sample = body.flagOr("sample", false);
    project.name = body.filledText("name");
    project.ownerAccountId = body.textOr("ownerAccountId", {});
    project.id = body.textOr("id", {});
    project.status = body.textOr("status", project.status);
    project.description = body.textOr("description", {});
    project.gridType = body.textOr("gridType", {});
    project.size = body.integerOr("size", 0);
    project.archived = body.flagOr("archived", false);
    return idAnswer(addProject(world, project));
}

Answer changeProjectCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string& id = call.place("id");
    requireProject(world, id);
    if (body.has("standardProperties"))
        setStandardProperties(world, id, body.rawOr("standardProperties", {}));
    if (body.has("gridType"))
        setGridType(world, id, body.text("gridType"));
    if (body.has("size"))
        setProjectSize(world, id, body.integer("size"));
    if (body.has("archived"))
        setArchived(world, id, body.flagOr("archived", false));
    return done();
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

std::string addProject(World& world, const ProjectSeed& project)
{
    if (project.name.empty())
        throw Refusal(400, "a project needs a name");
    requireOneOf(statuses, project.status, "project status");
    std::string id = freeId(world, "project", project.id);
    world.tables.run("INSERT INTO project (id, name, description, owner, status, templateId, size, sample, archived, creationTime) "
                     "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     id, project.name, project.description, project.ownerAccountId, project.status, project.templateId, project.size,
                     static_cast<int>(project.sample), static_cast<int>(project.archived), world.clock.text());
    setGridType(world, id, project.gridType);
    addDefaultFolders(world, id, project.name);
    return id;
}

void requireProject(World& world, const std::string& projectId)
{
    if (!world.tables.text("SELECT id FROM project WHERE id = ?", projectId))
        throw Refusal(404, "no such project: " + projectId);
}

void requireWriter(World& world, const std::string& projectId, const std::string& accountId)
{
    const auto allowed = world.tables.text("SELECT id FROM project WHERE id = ?1 AND (owner = ?2 OR EXISTS (SELECT 1 FROM permission "
                                           "WHERE projectId = ?1 AND accountId = ?2 AND permissionTypes LIKE '%Write%'))",
                                           projectId, accountId);
    if (!allowed)
        throw Refusal(403, "the account may not write in this project");
}

std::string addSpecialty(World& world, const SpecialtySeed& specialty)
{
    requireOneOf(specialtyTypes, specialty.type, "specialty type");
    requireProject(world, specialty.projectId);
    std::string id = freeId(world, "specialty", specialty.id);
    world.tables.run("INSERT INTO specialty (id, projectId, name, description, type) VALUES (?, ?, ?, '', ?)", id, specialty.projectId,
                     specialty.name, specialty.type);
    return id;
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

void addProjectControls(Router& router)
{
    router.addControl("POST", "projects", addProjectCall);
    router.addControl("PATCH", "projects/{id}", changeProjectCall);
    router.addControl("POST", "permissions", grantCall);
}

} // namespace orlo::platform
