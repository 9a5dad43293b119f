#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

// A monitor is a lease on a dataset: it lapses soon if nobody acknowledges it, and after a working day else.
constexpr std::int64_t acknowledgementSeconds = 60;
constexpr std::int64_t leaseSeconds = 12 * 60 * 60;

// Kinds of monitors: any number of readers, or one who writes.
constexpr int shared = 1;
constexpr int exclusive = 2;
constexpr int soft = 3;

/// This service says "msg" where the others say "message", in its refusals too.
Answer monitorAck(int status, std::int64_t code, const std::string& message, const std::string& data)
{
    return {status, json::Object().number("code", code).text("msg", message).raw("data", data).str()};
}

Handler inItsWords(const Handler& handler)
{
    return [handler](const Call& call, World& world) {
        try {
            return handler(call, world);
        }
        catch (const Refusal& refusal) {
            return monitorAck(refusal.status(), std::int64_t{refusal.status()} * 100, refusal.what(), "null");
        }
    };
}

void dropLapsed(World& world)
{
    world.tables.run("DELETE FROM monitor WHERE expires <= ?", world.clock.seconds());
}

/// What the caller's account may do with the dataset, as "permissions" rows tell of it; without a row, all.
bool allows(World& world, const std::string& datasetId, const User& caller, const std::string& type)
{
    const std::string rows = "SELECT COUNT(*) FROM permission, json_each(permissionTypes) WHERE resource = ? AND accountId = ? ";
    return world.tables.integer(rows, datasetId, caller.accountId) == 0 ||
           world.tables.integer(rows + "AND value = ?", datasetId, caller.accountId, type) != 0;
}

int kindOfWriting(World& world, const std::string& datasetId, const User& caller)
{
    if (allows(world, datasetId, caller, "Write"))
        return exclusive;
    if (allows(world, datasetId, caller, "SoftWrite"))
        return soft;
    throw Refusal(403, caller.userId + " may not write the dataset");
}

Answer grant(World& world, const std::string& datasetId, const User& caller, int kind)
{
    const std::string token = newId();
    world.tables.run("INSERT INTO monitor (token, datasetId, userId, kind, expires) VALUES (?, ?, ?, ?, ?)", token, datasetId,
                     caller.userId, kind, world.clock.seconds() + acknowledgementSeconds);
    return monitorAck(200, 10000, "OK", json::Object().text("token", token).number("monitor", kind).str());
}

Answer applyToWrite(const Call& call, World& world)
{
    const std::string& datasetId = call.place("dataSetId");
    requireDataset(world, datasetId);
    dropLapsed(world);
    const int kind = kindOfWriting(world, datasetId, call.caller);
    const auto writer = world.tables.text("SELECT userId FROM monitor WHERE datasetId = ? AND kind <> ?", datasetId, shared);
    if (writer && *writer != call.caller.userId)
        throw Refusal(409, *writer + " is writing the dataset");
    // The holder asks again, with the token or after it was lost: there is one that is good at any time, the new one.
    world.tables.run("DELETE FROM monitor WHERE datasetId = ? AND kind <> ?", datasetId, shared);
    return grant(world, datasetId, call.caller, kind);
}

Answer applyToRead(const Call& call, World& world)
{
    const std::string& datasetId = call.place("dsId");
    requireDataset(world, datasetId);
    dropLapsed(world);
    if (!allows(world, datasetId, call.caller, "Read"))
        throw Refusal(403, call.caller.userId + " may not read the dataset");
    return grant(world, datasetId, call.caller, shared);
}

Answer acknowledge(const Call& call, World& world)
{
    dropLapsed(world);
    if (world.tables.run("UPDATE monitor SET expires = ? WHERE token = ? AND datasetId = ? AND userId = ?",
                         world.clock.seconds() + leaseSeconds, call.filledQuery("token"), call.place("dataSetId"), call.caller.userId) == 0)
        throw Refusal(404, "no such token for the dataset");
    return monitorAck(200, 10000, "OK", "null");
}

Answer release(const Call& call, World& world)
{
    dropLapsed(world);
    const std::string& token = call.place("token");
    const auto holder = world.tables.text("SELECT userId FROM monitor WHERE token = ?", token);
    if (!holder)
        throw Refusal(404, "the token is no longer good");
    if (*holder != call.caller.userId && call.filledQuery("force") != "true")
        throw Refusal(403, "the token is that of " + *holder);
    world.tables.run("DELETE FROM monitor WHERE token = ?", token);
    return monitorAck(200, 10000, "OK", "null");
}

Answer writers(const Call& call, World& world)
{
    dropLapsed(world);
    return monitorAck(200, 10000, "OK",
                      world.tables.rows("SELECT datasetId AS dsId, kind AS monitor, token FROM monitor "
                                        "WHERE datasetId IN (SELECT value FROM json_each(?)) AND kind <> ? ORDER BY rank",
                                        json::array(json::readTextArray(call.body)), shared));
}

} // namespace

void addMonitorRoutes(Router& router)
{
    router.add("POST", "/v3/dataset/{dataSetId}/xmonitor/apply", inItsWords(applyToWrite));
    router.add("POST", "/dataset/{dsId}/smonitor/apply", inItsWords(applyToRead));
    router.add("PUT", "/dataset/{dataSetId}/monitor/ack", inItsWords(acknowledge));
    router.add("PUT", "/dataset/monitor/{token}/release", inItsWords(release));
    router.add("POST", "/dataset/xmonitor/list", inItsWords(writers));
}

} // namespace orlo::platform
