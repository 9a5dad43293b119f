#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

/// The archive service says "msg" where the others say "message".
Answer archiveAck(const std::string& data)
{
    return bare(json::Object().number("code", 10000).text("msg", "OK").raw("data", data).str());
}

/// The numbers as a JSON array, which a statement takes apart.
template <class Number>
std::string numberArray(const std::vector<Number>& numbers)
{
    std::string all;
    for (const Number number : numbers)
        all += (all.empty() ? "" : ",") + std::to_string(number);
    return "[" + all + "]";
}

Answer packagesOfProject(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return archiveAck(
        world.tables.rows("SELECT id AS packageId, name AS packageName, description AS \"desc\", (SELECT COALESCE(MAX(version), 0) FROM "
                          "archiveVersion WHERE packageId = archivePackage.id) AS version, receiver, receiverName, projectId, createTime, "
                          "sharer, sharerName, CASE enabled WHEN 1 THEN 'enable' ELSE 'disable' END AS status FROM archivePackage "
                          "WHERE projectId = ? ORDER BY rank",
                          call.place("projectId")));
}

/// Those of unknown packages are left out, as in every search here.
Answer versionsOfPackages(const Call& call, World& world)
{
    return archiveAck(world.tables.rows(
        "SELECT archiveVersion.id, version, ownerId, ownerName, packageId, (SELECT json_group_array(json_object('resourceId', resourceId, "
        "'integratePackageId', integratePackageId, 'type', 'IntegratePackage')) FROM (SELECT CAST(unitVersionId AS TEXT) AS resourceId, "
        "unitVersion.packageId AS integratePackageId FROM archiveContent JOIN unitVersion ON unitVersion.id = unitVersionId "
        "WHERE archiveVersionId = archiveVersion.id ORDER BY archiveContent.rank)) AS \"content:json\" "
        "FROM archiveVersion WHERE packageId IN (SELECT value FROM json_each(?)) ORDER BY archiveVersion.id",
        json::array(json::readTextArray(call.body))));
}

Answer versionsOfUnits(const Call& call, World& world)
{
    return archiveAck(world.tables.rows(
        "SELECT unitVersion.id, version, integrateStatus, packageId, name AS integratePackageName, creationTime, (SELECT "
        "json_group_array(versionId) FROM (SELECT versionId FROM unitDataset WHERE unitVersionId = unitVersion.id ORDER BY rank)) "
        "AS \"datasetVersions:json\" FROM unitVersion JOIN integratePackage ON integratePackage.id = packageId "
        "WHERE packageId IN (SELECT value FROM json_each(?)) ORDER BY unitVersion.id",
        json::array(json::readTextArray(call.body))));
}

Answer standardCodes(const Call& call, World& world)
{
    const std::string codes =
        world.tables.rows("SELECT id AS versionId, (SELECT json_group_array(json_object('sk', 'standardCode', 'sv', code)) FROM (SELECT "
                          "code FROM unitStandardCode WHERE unitVersionId = unitVersion.id ORDER BY rank)) AS \"scs:json\" "
                          "FROM unitVersion WHERE id IN (SELECT value FROM json_each(?)) ORDER BY id",
                          numberArray(json::readIntegerArray(call.body)));
    return archiveAck(json::Object().raw("vos", codes).str());
}

// Control calls

std::vector<int> readVersionIds(const json::Body& body, const std::string& key)
{
    std::vector<int> ids;
    for (const std::int64_t id : json::readIntegerArray(body.rawOr(key, "[]")))
        ids.push_back(readNumber(std::to_string(id), key));
    return ids;
}

Answer addArchivePackageCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    ArchivePackageSeed package;
    package.projectId = body.filledText("projectId");
    package.name = body.filledText("name");
    package.description = body.textOr("description", {});
    package.receiver = body.textOr("receiver", {});
    package.receiverName = body.textOr("receiverName", {});
    package.sharer = body.textOr("sharer", {});
    package.sharerName = body.textOr("sharerName", {});
    package.enabled = body.flagOr("enabled", package.enabled);
    package.id = body.textOr("id", {});
    return idAnswer(addArchivePackage(world, package));
}

Answer addArchiveUnitCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    ArchiveUnitSeed unit;
    unit.projectId = body.filledText("projectId");
    unit.name = body.filledText("name");
    unit.datasetVersions = readVersionIds(body, "datasetVersions");
    if (body.has("standardCodes"))
        unit.standardCodes = body.texts("standardCodes");
    unit.status = body.textOr("status", unit.status);
    unit.packageId = body.textOr("packageId", {});
    return idAnswer(std::to_string(addArchiveUnit(world, unit)));
}

Answer addArchiveVersionCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    const int version = addArchiveVersion(world, body.filledText("packageId"), readVersionIds(body, "units"));
    return enveloped(json::Object().number("version", version).str());
}

/// The integrate package with that id, which is made if the project hasn't got it.
std::string integratePackage(World& world, const ArchiveUnitSeed& unit)
{
    if (world.tables.text("SELECT id FROM integratePackage WHERE id = ? AND projectId = ?", unit.packageId, unit.projectId)) {
        world.tables.run("UPDATE integratePackage SET name = ? WHERE id = ?", unit.name, unit.packageId);
        return unit.packageId;
    }
    std::string id = freeId(world, "integratePackage", unit.packageId);
    world.tables.run("INSERT INTO integratePackage (id, projectId, name) VALUES (?, ?, ?)", id, unit.projectId, unit.name);
    return id;
}

} // namespace

std::string addArchivePackage(World& world, const ArchivePackageSeed& package)
{
    if (package.name.empty())
        throw Refusal(400, "an archive package needs a name");
    requireProject(world, package.projectId);
    std::string id = freeId(world, "archivePackage", package.id);
    world.tables.run("INSERT INTO archivePackage (id, projectId, name, description, receiver, receiverName, sharer, sharerName, enabled, "
                     "createTime) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     id, package.projectId, package.name, package.description, package.receiver, package.receiverName, package.sharer,
                     package.sharerName, static_cast<int>(package.enabled), world.clock.text());
    return id;
}

int addArchiveUnit(World& world, const ArchiveUnitSeed& unit)
{
    if (unit.name.empty())
        throw Refusal(400, "an archive unit needs a name");
    requireProject(world, unit.projectId);
    const std::string packageId = integratePackage(world, unit);
    world.tables.run(
        "INSERT INTO unitVersion (packageId, version, integrateStatus, creationTime) SELECT ?1, COALESCE(MAX(version), 0) + 1, "
        "?2, ?3 FROM unitVersion WHERE packageId = ?1",
        packageId, unit.status, world.clock.text());
    const auto id = static_cast<int>(world.tables.lastRowId());
    for (const int versionId : unit.datasetVersions) {
        if (!world.tables.integer("SELECT version.id FROM version JOIN dataset ON dataset.id = dataSetId WHERE version.id = ? AND "
                                  "projectId = ?",
                                  versionId, unit.projectId))
            throw Refusal(404, "no such version of a dataset in the project: " + std::to_string(versionId));
        world.tables.run("INSERT INTO unitDataset (unitVersionId, versionId) VALUES (?, ?)", id, versionId);
    }
    for (const std::string& code : unit.standardCodes)
        world.tables.run("INSERT INTO unitStandardCode (unitVersionId, code) VALUES (?, ?)", id, code);
    return id;
}

int addArchiveVersion(World& world, const std::string& packageId, const std::vector<int>& units)
{
    if (!world.tables.text("SELECT id FROM archivePackage WHERE id = ?", packageId))
        throw Refusal(404, "no such archive package: " + packageId);
    world.tables.run("INSERT INTO archiveVersion (packageId, version, ownerId, ownerName) SELECT id, (SELECT COALESCE(MAX(version), 0) + 1 "
                     "FROM archiveVersion WHERE packageId = ?1), sharer, sharerName FROM archivePackage WHERE id = ?1",
                     packageId);
    const std::int64_t id = world.tables.lastRowId();
    for (const int unit : units) {
        if (!world.tables.integer("SELECT unitVersion.id FROM unitVersion JOIN integratePackage ON integratePackage.id = packageId WHERE "
                                  "unitVersion.id = ? AND projectId = (SELECT projectId FROM archivePackage WHERE id = ?)",
                                  unit, packageId))
            throw Refusal(404, "no such version of a unit in the project: " + std::to_string(unit));
        world.tables.run("INSERT INTO archiveContent (archiveVersionId, unitVersionId) VALUES (?, ?)", id, unit);
    }
    return static_cast<int>(*world.tables.integer("SELECT version FROM archiveVersion WHERE id = ?", id));
}

void addArchiveRoutes(Router& router)
{
    router.add("GET", "/archive-assignment/project/{projectId}/packages", packagesOfProject);
    router.add("POST", "/v2/search/archive-packages/versions", versionsOfPackages);
    router.add("POST", "/search/integrate-packages/versions", versionsOfUnits);
    router.add("POST", "/integrate-packages/versions/standard/code", standardCodes);
    router.addControl("POST", "archives", addArchivePackageCall);
    router.addControl("POST", "archiveUnits", addArchiveUnitCall);
    router.addControl("POST", "archiveVersions", addArchiveVersionCall);
}

} // namespace orlo::platform
