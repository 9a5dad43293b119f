#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Folders.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

const std::string selectFolders = "SELECT id, name, folderType, parentId, projectId, teamId FROM folder ";
const std::string selectSpecialties = "SELECT id, name, projectId, description, type FROM specialty ";

Answer foldersOfProject(const Call& call, World& world)
{
    const std::string projectId = call.filledQuery("projectId");
    requireProject(world, projectId);
    return bare(world.tables.rows(selectFolders + "WHERE projectId = ? ORDER BY rank", projectId));
}

Answer rootFolder(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    const auto root = world.tables.row(selectFolders + "WHERE projectId = ? AND parentId = ''", call.place("projectId"));
    return enveloped(root.value_or("null"));
}

bool readRecursive(const Call& call)
{
    const std::string recursive = call.query("recursive");
    if (recursive != "true" && recursive != "false" && !recursive.empty())
        throw Refusal(400, "\"recursive\" must be true or false");
    return recursive == "true";
}

Answer subFolders(const Call& call, World& world)
{
    const bool recursive = readRecursive(call);
    const std::string& id = call.place("folderId");
    requireFolder(world, id);
    if (!recursive)
        return bare(world.tables.rows(selectFolders + "WHERE parentId = ? ORDER BY rank", id));
    return bare(world.tables.rows("WITH RECURSIVE below (id) AS (SELECT id FROM folder WHERE parentId = ? "
                                  "UNION SELECT folder.id FROM folder JOIN below ON folder.parentId = below.id) " +
                                      selectFolders + "WHERE id IN (SELECT id FROM below) ORDER BY rank",
                                  id));
}

Answer projectOfDataset(const Call& call, World& world)
{
    const std::string id = call.filledQuery("datasetId");
    const auto place = world.tables.row("SELECT projectId, folderId FROM dataset WHERE id = ?", id);
    if (!place)
        throw Refusal(404, "no such dataset: " + id);
    return bare(*place);
}

Answer specialtiesOfProject(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(world.tables.rows(selectSpecialties + "WHERE projectId = ? ORDER BY rank", call.place("projectId")));
}

std::string specialtyRecord(World& world, const std::string& id)
{
    const auto record = world.tables.row(selectSpecialties + "WHERE id = ?", id);
    if (!record)
        throw Refusal(404, "no such specialty: " + id);
    return *record;
}

Answer oneSpecialty(const Call& call, World& world)
{
    return enveloped(specialtyRecord(world, call.place("id")));
}

Answer newSpecialty(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string projectId = body.filledText("projectId");
    requireProject(world, projectId);
    requireWriter(world, projectId, call.caller.accountId);
    return enveloped(specialtyRecord(world, addSpecialty(world, {projectId, body.filledText("type"), body.text("name")})));
}

} // namespace

void addFolderRoutes(Router& router)
{
    router.add("GET", "/folder/byproject", foldersOfProject);
    router.add("GET", "/projects/{projectId}/rootfolder", rootFolder);
    router.add("GET", "/folders/{folderId}/subfolders", subFolders);
    router.add("GET", "/folder/hasdataset", projectOfDataset);
    router.add("GET", "/projects/{projectId}/specialties", specialtiesOfProject);
    router.add("GET", "/specialties/{id}", oneSpecialty);
    router.add("POST", "/specialties", newSpecialty);
}

} // namespace orlo::platform
