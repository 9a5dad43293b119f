#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Routes.h"
#include "Teams.h"

#include <algorithm>
#include <vector>

namespace orlo::platform {

namespace {

constexpr int pageSize = 200;
constexpr int refusedChange = 4001;

/// This service says "code" 0 for success, and "msg" where the others say "message".
Answer issueAck(int code, const std::string& message, const std::string& data)
{
    return bare(json::Object().number("code", code).text("msg", message).raw("data", data).str());
}

/// The issues of a condition on `issue`, with their datasets, the latest first.
std::string issuesWhere(World& world, const std::string& condition, const std::string& argument, const Call& call)
{
    const int page = readNumber(call.filledQuery("page"), "page");
    if (page < 1)
        throw Refusal(400, "pages count from 1");
    return world.tables.rows(
        "SELECT issue.id AS id, teamId, team.name AS teamName, userId, userId AS userName, title, issue.description AS description, "
        "elementId, "
        "elementName, file, camera, markCoordinate, memo, creationTime, updateTime, 'Comments' AS type, (SELECT "
        "json_group_array(json_object('isCurrent', isCurrent, 'datasetId', dataset.id, 'datasetName', dataset.name, 'teamId', "
        "dataset.teamId, "
        "'displayVersion', displayVersion, 'version', version.version, 'deleted', json('false'))) FROM issueDataset JOIN version ON "
        "version.id = versionId JOIN dataset ON dataset.id = version.dataSetId WHERE issueId = issue.id) AS \"issueDatasets:json\" FROM "
        "issue "
        "JOIN team ON team.id = teamId WHERE " +
            condition + " ORDER BY issue.id DESC LIMIT ? OFFSET ?",
        argument, pageSize, (page - 1) * pageSize);
}

Answer issuesOfDatasets(const Call& call, World& world)
{
    const std::string ids = json::array(json::readTextArray(call.body));
    return issueAck(0, "OK",
                    issuesWhere(world,
                                "EXISTS (SELECT 1 FROM issueDataset JOIN version ON version.id = versionId WHERE issueId = issue.id AND "
                                "dataSetId IN (SELECT value FROM json_each(?)))",
                                ids, call));
}

Answer issuesOfTeam(const Call& call, World& world)
{
    requireTeam(world, call.place("teamId"));
    return issueAck(0, "OK", issuesWhere(world, "teamId = ?", call.place("teamId"), call));
}

/// Tells the owner of a dataset, or the author of an issue, what somebody else did.
void tell(World& world, const Call& call, const std::string& receiver, std::int64_t issueId, const std::string& title,
          const std::string& datasetId, const std::string& action)
{
    if (receiver == call.caller.userId || receiver == call.caller.accountId)
        return;
    MessageSeed message;
    message.receiver = receiver;
    message.title = title;
    message.content = call.caller.userId + ": " + action;
    message.datasetId = datasetId;
    message.projectId = world.tables.text("SELECT projectId FROM dataset WHERE id = ?", datasetId).value_or("");
    message.resourceType = "Issue";
    message.resourceId = std::to_string(issueId);
    message.senderId = call.caller.userId;
    message.senderAction = action;
    addMessage(world, message);
}

Answer newIssue(const Call& call, World& world)
{
    const json::Body body(call.body);
    requireTeam(world, body.filledText("teamId"));
    world.tables.run("INSERT INTO issue (teamId, userId, title, description, elementId, elementName, file, camera, markCoordinate, memo, "
                     "creationTime, updateTime) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     body.filledText("teamId"), body.filledText("userId"), body.filledText("title"), body.filledText("description"),
                     body.textOr("elementId", {}), body.textOr("elementName", {}), body.textOr("file", {}), body.textOr("camera", {}),
                     body.textOr("markCoordinate", {}), body.textOr("memo", "Open"), world.clock.text(), world.clock.text());
    const std::int64_t id = world.tables.lastRowId();
    const std::string datasets = body.rawOr("issueDatasets", "[]");
    if (!json::isJsonArray(datasets))
        throw Refusal(400, "\"issueDatasets\" is no array");
    world.tables.run("INSERT INTO issueDataset (issueId, versionId, isCurrent) SELECT ?, json_extract(value, '$.versionId'), "
                     "coalesce(json_extract(value, '$.isCurrent'), 0) FROM json_each(?)",
                     id, datasets);
    world.tables.each(
        [&](SQLite::Statement& dataset) {
            tell(world, call, dataset.getColumn(1).getString(), id, body.filledText("title"), dataset.getColumn(0).getString(), "raise");
        },
        "SELECT DISTINCT dataset.id, ownerId FROM issueDataset JOIN version ON version.id = versionId JOIN dataset ON dataset.id = "
        "dataSetId WHERE issueId = ? AND isCurrent = 1",
        id);
    return issueAck(0, "OK", json::Object().number("id", id).str());
}

struct StateChange
{
    const char* action;
    std::vector<std::string> from;
    const char* to;
};

/// An open issue may be dealt with, then it is submitted, or solved at once; one that isn't closed may be closed, and one that isn't open
/// opened again.
const std::vector<StateChange>& stateChanges()
{
    static const std::vector<StateChange> changes{
        {"deal", {"Open"}, "Open"},
        {"submit", {"Open"}, "Resolved"},
        {"solve", {"Open"}, "Resolved"},
        {"close", {"Open", "Resolved"}, "Closed"},
        {"reopen", {"Resolved", "Closed"}, "Open"},
    };
    return changes;
}

Answer changeState(const StateChange& change, const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::int64_t id = body.integer("issueId");
    const auto state = world.tables.text("SELECT memo FROM issue WHERE id = ?", id);
    if (!state)
        return issueAck(refusedChange, "no such issue: " + std::to_string(id), "null");
    if (std::find(change.from.begin(), change.from.end(), *state) == change.from.end())
        return issueAck(refusedChange, "the issue is " + *state + ": " + change.action, "null");
    world.tables.run("UPDATE issue SET memo = ?, updateTime = ? WHERE id = ?", std::string(change.to), world.clock.text(), id);
    tell(world, call, *world.tables.text("SELECT userId FROM issue WHERE id = ?", id), id,
         *world.tables.text("SELECT title FROM issue WHERE id = ?", id), {}, change.action);
    return issueAck(0, "OK", "null");
}

} // namespace

void addIssueRoutes(Router& router)
{
    router.add("POST", "/issue/detail/bydatasetids", issuesOfDatasets);
    router.add("GET", "/issue/detail/{teamId}/byteamid", issuesOfTeam);
    router.add("PUT", "/issue", newIssue);
    for (const StateChange& change : stateChanges())
        router.add("POST", std::string("/issue/") + change.action,
                   [&change](const Call& call, World& world) { return changeState(change, call, world); });
}

} // namespace orlo::platform
