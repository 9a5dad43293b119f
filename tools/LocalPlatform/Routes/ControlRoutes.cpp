#include "../Server/Faults.h"
#include "../Server/RequestLog.h"
#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "../Store/Transfers.h"
#include "Datasets.h"
#include "Projects.h"
#include "Routes.h"
#include "Users.h"

#include <algorithm>

namespace orlo::platform {

namespace {

using json::Body;

Answer idAnswer(const std::string& id)
{
    return enveloped(json::Object().text("id", id).str());
}

Answer done()
{
    return enveloped("null");
}

Answer addUserCall(const Call& call, World& world)
{
    const Body body(call.body);
    addUser(world, {body.filledText("userId"), body.filledText("accountId"), body.filledText("accessToken")});
    return done();
}

/// A token's end: now, by a revocation, or in so many seconds of the platform's clock.
Answer changeTokenCall(const Call& call, World& world)
{
    const Body body(call.body);
    const std::string token = body.filledText("accessToken");
    if (!body.has("revoked") && !body.has("expiresIn"))
        throw Refusal(400, "\"revoked\" or \"expiresIn\" is needed");
    if (body.has("revoked"))
        setRevoked(world, token, body.flagOr("revoked", false));
    if (body.has("expiresIn"))
        expireIn(world, token, body.integer("expiresIn"));
    return done();
}

Answer setQuotaCall(const Call& call, World& world)
{
    const Body body(call.body);
    const std::string account = body.filledText("accountId");
    if (body.flagOr("personal", false))
        setPersonal(world, account);
    else
        setQuota(world, account, readNumber(std::to_string(body.integer("projectNumber")), "projectNumber"),
                 readNumber(std::to_string(body.integer("spaceSize")), "spaceSize"));
    return done();
}

Answer grantCall(const Call& call, World& world)
{
    const Body body(call.body);
    grantPermission(world, body.filledText("projectId"), body.filledText("accountId"), body.filledText("resource"),
                    body.texts("permissionTypes"));
    return done();
}

Answer addProjectCall(const Call& call, World& world)
{
    const Body body(call.body);
    NewProject project;
    project.sample = body.flagOr("sample", false);
    project.seed.name = body.filledText("name");
    project.seed.ownerAccountId = body.textOr("ownerAccountId", {});
    project.seed.id = body.textOr("id", {});
    project.seed.status = body.textOr("status", project.seed.status);
    project.seed.description = body.textOr("description", {});
    project.seed.gridType = body.textOr("gridType", {});
    project.seed.size = body.integerOr("size", 0);
    project.seed.archived = body.flagOr("archived", false);
    return idAnswer(createProject(world, project));
}

Answer changeProjectCall(const Call& call, World& world)
{
    const Body body(call.body);
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

Answer addFolderCall(const Call& call, World& world)
{
    const Body body(call.body);
    FolderSeed folder;
    folder.parentId = body.filledText("parentId");
    folder.name = body.filledText("name");
    folder.folderType = body.textOr("folderType", folder.folderType);
    folder.teamId = body.textOr("teamId", {});
    folder.id = body.textOr("id", {});
    return idAnswer(createFolder(world, folder));
}

Answer addDatasetCall(const Call& call, World& world)
{
    const Body body(call.body);
    DatasetSeed dataset;
    dataset.name = body.filledText("name");
    dataset.folderId = body.textOr("folderId", {});
    dataset.teamId = body.textOr("teamId", {});
    dataset.type = body.textOr("type", dataset.type);
    dataset.specialtyId = body.textOr("specialtyId", {});
    dataset.ownerId = body.textOr("ownerId", {});
    dataset.description = body.textOr("description", {});
    dataset.id = body.textOr("id", {});
    dataset.modelingDatasetId = body.textOr("modelingDatasetId", {});
    return idAnswer(createDataset(world, dataset));
}

Answer addFontCall(const Call& call, World& world)
{
    const Body body(call.body);
    FontSeed font;
    font.projectId = body.filledText("projectId");
    font.name = body.filledText("name");
    font.bytes = body.textOr("text", {});
    font.fileType = body.textOr("fileType", font.fileType);
    font.fontFrom = body.textOr("fontFrom", font.fontFrom);
    font.uploader = body.textOr("uploader", {});
    font.id = body.textOr("id", {});
    return idAnswer(createFont(world, font));
}

int smallNumber(const Body& body, const std::string& key, int fallback)
{
    return readNumber(std::to_string(body.integerOr(key, fallback)), key);
}

Fault readFault(const Body& body)
{
    Fault fault;
    fault.kind = faultKindOf(body.filledText("kind"));
    fault.path = body.filledText("path");
    fault.method = body.textOr("method", {});
    fault.prefix = body.flagOr("prefix", false);
    fault.calls = smallNumber(body, "calls", fault.calls);
    fault.status = smallNumber(body, "status", fault.status);
    fault.body = body.textOr("body", {});
    fault.bytes = static_cast<std::size_t>(std::max(0, smallNumber(body, "bytes", 0)));
    fault.delayMilliseconds = smallNumber(body, "delayMilliseconds", 0);
    fault.carryOut = body.flagOr("carryOut", false);
    fault.ofRequest = body.flagOr("ofRequest", false);
    return fault;
}

Answer addFaultCall(const Call& call, World& world)
{
    try {
        return enveloped(json::Object().number("id", world.faults.add(readFault(Body(call.body)))).str());
    }
    catch (const std::invalid_argument& error) {
        throw Refusal(400, error.what());
    }
}

Answer listFaults(const Call&, World& world)
{
    return enveloped(world.faults.list());
}

Answer clearFaultsCall(const Call&, World& world)
{
    world.faults.clear();
    return done();
}

Answer clockAnswer(World& world)
{
    return enveloped(json::Object().text("now", world.clock.text()).str());
}

Answer readClock(const Call&, World& world)
{
    return clockAnswer(world);
}

Answer moveClockCall(const Call& call, World& world)
{
    world.clock.move(Body(call.body).integer("seconds"));
    return clockAnswer(world);
}

Answer countRequests(const Call& call, World& world)
{
    const auto count = static_cast<std::int64_t>(world.requests.count(call.query("method"), call.query("path")));
    return enveloped(json::Object().number("count", count).str());
}

Answer clearRequests(const Call&, World& world)
{
    world.requests.clear();
    world.transfers.clearPeak();
    return done();
}

} // namespace

void addControlRoutes(Router& router)
{
    const auto add = [&router](const char* method, const std::string& name, Handler handler) {
        router.add(method, "/_control/" + name, std::move(handler), Access::Control);
    };
    add("POST", "users", addUserCall);
    add("POST", "tokens", changeTokenCall);
    add("POST", "quota", setQuotaCall);
    add("POST", "permissions", grantCall);
    add("POST", "projects", addProjectCall);
    add("PATCH", "projects/{id}", changeProjectCall);
    add("POST", "folders", addFolderCall);
    add("POST", "datasets", addDatasetCall);
    add("POST", "fonts", addFontCall);
    add("POST", "faults", addFaultCall);
    add("GET", "faults", listFaults);
    add("DELETE", "faults", clearFaultsCall);
    add("GET", "clock", readClock);
    add("POST", "clock", moveClockCall);
    add("GET", "requests", countRequests);
    add("DELETE", "requests", clearRequests);
}

} // namespace orlo::platform
