#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Projects.h"
#include "Routes.h"
#include "Teams.h"

namespace orlo::platform {

namespace {

const std::string selectTeams = "SELECT id, name, description, linkedFolderId, projectId, status FROM team ";

Answer newTeam(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string id = addTeam(world, {body.filledText("projectId"), body.filledText("name")});
    addMember(world, id, call.caller.accountId);
    return enveloped(*world.tables.row(selectTeams + "WHERE id = ?", id));
}

Answer teamsOfProject(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(world.tables.rows(selectTeams + "WHERE projectId = ? ORDER BY rank", call.place("projectId")));
}

Answer teamsOfFolder(const Call& call, World& world)
{
    const json::Body body(call.body);
    return enveloped(world.tables.rows(selectTeams + "WHERE linkedFolderId = ? ORDER BY rank", body.text("linkedFolderId")));
}

Answer teamsOfMember(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(world.tables.rows(selectTeams + "WHERE projectId = ? AND EXISTS (SELECT 1 FROM teamMember WHERE teamId = team.id AND "
                                                     "accountId = ?) ORDER BY rank",
                                       call.place("projectId"), call.place("userId")));
}

Answer oneTeam(const Call& call, World& world)
{
    requireTeam(world, call.place("teamId"));
    return enveloped(*world.tables.row(selectTeams + "WHERE id = ?", call.place("teamId")));
}

Answer newMember(const Call& call, World& world)
{
    addMember(world, call.place("teamId"), call.place("userId"));
    return done();
}

Answer memberGone(const Call& call, World& world)
{
    requireTeam(world, call.place("teamId"));
    if (world.tables.run("DELETE FROM teamMember WHERE teamId = ? AND accountId = ?", call.place("teamId"), call.place("userId")) == 0)
        throw Refusal(404, "no such member of the team: " + call.place("userId"));
    return done();
}

/// A status as queries name it; empty for all.
std::string statusOf(const Call& call)
{
    std::string status = call.query("status");
    if (!status.empty() && status != "draft" && status != "committed")
        throw Refusal(400, "unknown dataset status: " + status);
    return status;
}

Answer datasetsOfTeam(const Call& call, World& world)
{
    requireTeam(world, call.place("teamId"));
    return enveloped(world.tables.rows(selectDatasets + "WHERE teamId = ?1 AND (?2 = '' OR status = ?2) ORDER BY rank",
                                       call.place("teamId"), statusOf(call)));
}

Answer ownDatasets(const Call& call, World& world)
{
    const std::string teams = json::array(json::readTextArray(call.body));
    return enveloped(world.tables.rows(selectDatasets + "WHERE teamId IN (SELECT value FROM json_each(?1)) AND (?2 = '' OR status = ?2) "
                                                        "AND ownerId IN (?3, ?4) ORDER BY rank",
                                       teams, statusOf(call), call.caller.accountId, call.caller.userId));
}

} // namespace

void addTeamRoutes(Router& router)
{
    router.add("POST", "/v2/teams", newTeam);
    router.add("GET", "/projects/{projectId}/teams", teamsOfProject);
    router.add("POST", "/teams", teamsOfFolder);
    router.add("GET", "/users/{userId}/projects/{projectId}/teams", teamsOfMember);
    router.add("GET", "/teams/{teamId}", oneTeam);
    router.add("POST", "/teams/{teamId}/users/{userId}", newMember);
    router.add("DELETE", "/teams/{teamId}/users/{userId}", memberGone);
    router.add("GET", "/teams/{teamId}/dataSets/byStatus", datasetsOfTeam);
    router.add("POST", "/v2/search/dataSets/byTeams", ownDatasets);
}

} // namespace orlo::platform
