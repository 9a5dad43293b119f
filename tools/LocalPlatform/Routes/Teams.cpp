#include "Teams.h"

#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

Answer addTeamCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    TeamSeed team;
    team.projectId = body.filledText("projectId");
    team.name = body.filledText("name");
    team.id = body.textOr("id", {});
    team.description = body.textOr("description", {});
    team.status = body.textOr("status", team.status);
    return idAnswer(addTeam(world, team));
}

Answer addMemberCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    addMember(world, body.filledText("teamId"), body.filledText("accountId"));
    return done();
}

} // namespace

void requireTeam(World& world, const std::string& teamId)
{
    if (!world.tables.text("SELECT id FROM team WHERE id = ?", teamId))
        throw Refusal(404, "no such team: " + teamId);
}

std::string addTeam(World& world, const TeamSeed& team)
{
    if (team.name.empty())
        throw Refusal(400, "a team needs a name");
    requireProject(world, team.projectId);
    std::string id = freeId(world, "team", team.id);
    const auto root = world.tables.text("SELECT id FROM folder WHERE projectId = ? AND folderType = 'Root'", team.projectId);
    const std::string folderId = addFolder(world, {root.value(), team.name, "TeamRelated", {}, {}});
    world.tables.run("UPDATE folder SET teamId = ? WHERE id = ?", id, folderId);
    world.tables.run("INSERT INTO team (id, projectId, name, description, status, linkedFolderId) VALUES (?, ?, ?, ?, ?, ?)", id,
                     team.projectId, team.name, team.description, team.status, folderId);
    world.tables.run("INSERT INTO teamMember (teamId, accountId) SELECT ?, owner FROM project WHERE id = ?", id, team.projectId);
    return id;
}

void addMember(World& world, const std::string& teamId, const std::string& accountId)
{
    requireTeam(world, teamId);
    world.tables.run("INSERT OR IGNORE INTO teamMember (teamId, accountId) VALUES (?, ?)", teamId, accountId);
}

void addTeamControls(Router& router)
{
    router.addControl("POST", "teams", addTeamCall);
    router.addControl("POST", "members", addMemberCall);
}

} // namespace orlo::platform
