#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Files.h"
#include "Projects.h"
#include "Routes.h"
#include "Users.h"

namespace orlo::platform {

namespace {

// The lengths of stored versions count towards the size of their project.
const std::string selectProjects = R"sql(
SELECT creationTime, description, id, name, owner, status, gridType, standardProperties AS "standardProperties:json",
    size + (SELECT COALESCE(SUM(version.size), 0) FROM version JOIN dataset ON dataset.id = version.dataSetId
            WHERE dataset.projectId = project.id) AS size
FROM project WHERE )sql";

const std::string isMine = "sample = 0 AND (owner = ?1 OR EXISTS "
                           "(SELECT 1 FROM permission WHERE permission.projectId = project.id AND permission.accountId = ?1))";

std::string conditionOf(const std::string& scenario)
{
    if (scenario.empty() || scenario == "DEFAULT")
        return isMine + " AND archived = 0";
    if (scenario == "ARCHIVE")
        return isMine + " AND archived = 1";
    if (scenario == "OWNER")
        return "sample = 0 AND owner = ?1";
    throw Refusal(400, "unknown scenario: " + scenario);
}

Answer listProjects(const Call& call, World& world)
{
    const std::string condition = conditionOf(call.query("scenario"));
    return bare(world.tables.rows(selectProjects + condition + " ORDER BY rank", call.caller.accountId));
}

Answer listProjectsByStatus(const Call& call, World& world)
{
    const std::string status = call.filledQuery("status");
    if (status != "Ongoing" && status != "Suspended" && status != "Completed")
        throw Refusal(400, "unknown project status: " + status);
    return bare(world.tables.rows(selectProjects + isMine + " AND status = ?2 ORDER BY rank", call.caller.accountId, status));
}

Answer listSampleProjects(const Call&, World& world)
{
    return enveloped(world.tables.rows(selectProjects + "sample = 1 ORDER BY rank"));
}

std::string projectRecord(World& world, const std::string& projectId)
{
    requireProject(world, projectId);
    return *world.tables.row(selectProjects + "id = ?", projectId);
}

Answer newProject(const Call& call, World& world)
{
    const json::Body body(call.body);
    ProjectSeed project;
    project.name = body.filledText("name");
    project.status = body.filledText("status");
    project.description = body.textOr("description", {});
    project.id = body.textOr("id", {});
    project.ownerAccountId = call.caller.accountId;
    project.templateId = body.textOr("templateId", {});
    requireRoomForProject(world, call.caller.accountId);
    return enveloped(projectRecord(world, addProject(world, project)));
}

Answer oneProject(const Call& call, World& world)
{
    return enveloped(projectRecord(world, call.place("id")));
}

Answer deleteProject(const Call& call, World& world)
{
    const std::string& id = call.place("id");
    requireProject(world, id);
    if (!world.tables.text("SELECT id FROM project WHERE id = ? AND owner = ? AND sample = 0", id, call.caller.accountId))
        throw Refusal(403, "only its owner may delete a project");
    removeBlobsOfProject(world, id);
    world.tables.run("DELETE FROM project WHERE id = ?", id);
    return done();
}

Answer resourceLimit(const Call& call, World& world)
{
    const auto limit = world.tables.row("SELECT projectNumber, spaceSize FROM quota WHERE accountId = ?", call.caller.accountId);
    return enveloped(limit.value_or("null"));
}

Answer permissionTypes(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(world.tables.rows("SELECT resource, permissionTypes AS \"permissionTypes:json\" FROM permission "
                                       "WHERE projectId = ? AND accountId = ? ORDER BY resource",
                                       call.place("projectId"), call.place("userId")));
}

} // namespace

void addProjectRoutes(Router& router)
{
    router.add("GET", "/projects", listProjects);
    router.add("GET", "/projects/status", listProjectsByStatus);
    router.add("POST", "/v3/projects", newProject);
    router.add("GET", "/v2/projects/{id}", oneProject);
    router.add("DELETE", "/v2/projects/{id}", deleteProject);
    router.add("GET", "/v2/sampleProjects", listSampleProjects);
    router.add("GET", "/resource/limit", resourceLimit);
    router.add("GET", "/projects/{projectId}/users/{userId}/permission", permissionTypes);
}

} // namespace orlo::platform
