#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Projects.h"
#include "Routes.h"
#include "Teams.h"

#include <array>

namespace orlo::platform {

namespace {

constexpr std::array<const char*, 2> trustedTypes = {"Folder", "DataSet"};
constexpr std::array<const char*, 3> shareStatuses = {"Temporary", "Shared", "Consumed"};

Answer addTrustCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    addTrust(world,
             {body.filledText("teamId"), body.filledText("trustedTeamId"), body.filledText("resourceType"), body.filledText("resourceId")});
    return done();
}

/// "datasetIds" stand beside "versions", one of each for each version that is shared.
Answer addShareCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    ShareSeed share;
    share.shareId = body.filledText("shareId");
    share.consumedId = body.filledText("consumedId");
    share.name = body.filledText("name");
    share.status = body.textOr("status", share.status);
    share.id = body.textOr("id", {});
    const std::vector<std::string> datasets = body.texts("datasetIds");
    const std::vector<std::int64_t> versions = json::readIntegerArray(body.rawOr("versions", "[]"));
    if (datasets.size() != versions.size())
        throw Refusal(400, "each of \"datasetIds\" needs one of \"versions\"");
    for (std::size_t i = 0; i < datasets.size(); ++i)
        share.contents.push_back({datasets[i], readNumber(std::to_string(versions[i]), "version")});
    return idAnswer(addShare(world, share));
}

} // namespace

void addTrust(World& world, const TrustSeed& trust)
{
    requireOneOf(trustedTypes, trust.resourceType, "resource type");
    requireTeam(world, trust.teamId);
    requireTeam(world, trust.trustedTeamId);
    world.tables.run("INSERT OR IGNORE INTO trust (teamId, trustedTeamId, resourceType, resourceId) VALUES (?, ?, ?, ?)", trust.teamId,
                     trust.trustedTeamId, trust.resourceType, trust.resourceId);
}

std::string addShare(World& world, const ShareSeed& share)
{
    requireOneOf(shareStatuses, share.status, "share status");
    requireTeam(world, share.shareId);
    requireTeam(world, share.consumedId);
    std::string id = freeId(world, "share", share.id);
    world.tables.run("INSERT INTO share (id, shareId, consumedId, name, status) VALUES (?, ?, ?, ?, ?)", id, share.shareId,
                     share.consumedId, share.name, share.status);
    world.tables.each(
        [&](SQLite::Statement& member) {
            MessageSeed told;
            told.receiver = member.getColumn(0).getString();
            told.projectId = member.getColumn(1).getString();
            told.title = share.name;
            told.content = "datasets were shared with the team";
            told.resourceType = "Share";
            told.resourceId = id;
            told.senderId = share.shareId;
            told.senderAction = "share";
            addMessage(world, told);
        },
        "SELECT accountId, projectId FROM teamMember JOIN team ON team.id = teamId WHERE teamId = ?", share.consumedId);
    for (const SharedVersion& shared : share.contents) {
        requireVersion(world, shared.datasetId, shared.version);
        world.tables.run("INSERT OR IGNORE INTO shareContent (recordId, datasetId, version) VALUES (?, ?, ?)", id, shared.datasetId,
                         shared.version);
    }
    return id;
}

void addShareControls(Router& router)
{
    router.addControl("POST", "trusts", addTrustCall);
    router.addControl("POST", "shares", addShareCall);
}

} // namespace orlo::platform
