#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Routes.h"
#include "Teams.h"

namespace orlo::platform {

namespace {

/// Only what others trust a team with is told.
void requireTrustedBy(const Call& call, World& world)
{
    requireTeam(world, call.place("teamId"));
    if (call.filledQuery("type") != "TrustBy")
        throw Refusal(400, "unknown type: " + call.query("type"));
}

/// A row for each folder.
Answer foldersForTeam(const Call& call, World& world)
{
    requireTrustedBy(call, world);
    return enveloped(world.tables.rows("SELECT team.id AS teamId, team.name AS teamName, resourceId FROM trust JOIN team ON team.id = "
                                       "trust.teamId WHERE trustedTeamId = ? AND resourceType = 'Folder' ORDER BY trust.rank",
                                       call.place("teamId")));
}

/// A row for each team, with its resources.
Answer resourcesForTeam(const Call& call, World& world)
{
    requireTrustedBy(call, world);
    return enveloped(world.tables.rows(
        "SELECT team.id AS teamId, team.name AS teamName, json_group_array(json_object('type', resourceType, 'resourceId', resourceId)) "
        "AS \"resources:json\" FROM trust JOIN team ON team.id = trust.teamId WHERE trustedTeamId = ? GROUP BY team.id ORDER BY team.rank",
        call.place("teamId")));
}

Answer sharesForTeam(const Call& call, World& world)
{
    const json::Body body(call.body);
    requireTeam(world, body.filledText("consumedId"));
    return enveloped(world.tables.rows("SELECT id, shareId, consumedId, name, status FROM share WHERE consumedId = ? ORDER BY rank",
                                       body.filledText("consumedId")));
}

Answer contentsOfShares(const Call& call, World& world)
{
    const std::string records = json::array(json::readTextArray(call.body));
    return enveloped(world.tables.rows(
        "SELECT json_object('id', dataset.id, 'name', dataset.name) AS \"dataSet:json\", json_group_array(json_object('version', version)) "
        "AS \"versions:json\" FROM shareContent JOIN dataset ON dataset.id = datasetId WHERE recordId IN (SELECT value FROM json_each(?)) "
        "GROUP BY recordId, datasetId ORDER BY min(shareContent.rank)",
        records));
}

/// A team sees what others trust it with, a person all that the teams see to which he belongs; a role sees nothing here.
Answer resourcesOfVisitor(const Call& call, World& world)
{
    const json::Body body(call.body);
    return enveloped(world.tables.rows(
        "SELECT resourceType, resourceId FROM trust WHERE (?2 = 'Team' AND trustedTeamId = ?1) OR (?2 = 'Personal' AND "
        "trustedTeamId IN (SELECT teamId FROM teamMember WHERE accountId = ?1)) GROUP BY resourceType, resourceId ORDER BY min(rank)",
        body.text("visitor"), body.text("visitorType")));
}

} // namespace

void addShareRoutes(Router& router)
{
    router.add("GET", "/teams/{teamId}/permissionResource", foldersForTeam);
    router.add("GET", "/v2/teams/{teamId}/permissionResource", resourcesForTeam);
    router.add("POST", "/share/records", sharesForTeam);
    router.add("POST", "/share/contents", contentsOfShares);
    router.add("POST", "/permission/query", resourcesOfVisitor);
}

} // namespace orlo::platform
