#include "Folders.h"

#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Projects.h"
#include "Routes.h"

#include <array>

namespace orlo::platform {

namespace {

constexpr std::array defaultFolders = {"Process", "Published", "ProjectShare", "OtherFiles"};
constexpr const char* defaultTeam = "默认团队";

void insertFolder(World& world, const std::string& id, const std::string& projectId, const FolderSeed& folder)
{
    world.tables.run("INSERT INTO folder (id, projectId, parentId, name, folderType, teamId) VALUES (?, ?, ?, ?, ?, ?)", id, projectId,
                     folder.parentId, folder.name, folder.folderType, folder.teamId);
}

Answer addFolderCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    FolderSeed folder;
    folder.parentId = body.filledText("parentId");
    folder.name = body.filledText("name");
    folder.folderType = body.textOr("folderType", folder.folderType);
    folder.teamId = body.textOr("teamId", {});
    folder.id = body.textOr("id", {});
    return idAnswer(addFolder(world, folder));
}

} // namespace

void addDefaultFolders(World& world, const std::string& projectId, const std::string& projectName)
{
    const std::string rootId = newId();
    insertFolder(world, rootId, projectId, FolderSeed{{}, projectName, "Root", {}, {}});
    for (const char* type : defaultFolders)
        insertFolder(world, newId(), projectId, FolderSeed{rootId, type, type, {}, {}});
    addTeam(world, {projectId, defaultTeam});
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

std::string addFolder(World& world, const FolderSeed& folder)
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

void addFolderControls(Router& router)
{
    router.addControl("POST", "folders", addFolderCall);
}

} // namespace orlo::platform
