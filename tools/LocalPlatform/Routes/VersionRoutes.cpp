#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Files.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

const std::string selectVersions = "SELECT id, version, dataSetId, dataSetSourceFile, displayVersion, creationTime, status, description, "
                                   "verifyStatus, metaInfo, size FROM version ";

// Leaves room for the versions that are numbered here.
constexpr int highestNumber = 1000000;

struct NewVersion
{
    std::string datasetId;
    int number = 0;
    std::string sourceFile;
    std::string status = "WIP";
    std::string description;
    std::string metaInfo;
    std::int64_t size = 0;
    std::optional<std::int64_t> documentVersion{}; ///< of a file by Arkiv
};

/// Among what a version remembers.
const std::string documentVersionKey = "versionIndex";

int nextNumber(World& world, const std::string& datasetId)
{
    return static_cast<int>(*world.tables.integer("SELECT COALESCE(MAX(version), 0) + 1 FROM version WHERE dataSetId = ?", datasetId));
}

/// A dataset with a published version counts as committed.
void refreshDataset(World& world, const std::string& datasetId)
{
    world.tables.run("UPDATE dataset SET tipVersion = (SELECT COALESCE(MAX(version), 0) FROM version WHERE dataSetId = ?1), "
                     "status = CASE WHEN EXISTS (SELECT 1 FROM version WHERE dataSetId = ?1 AND status = 'Published') "
                     "THEN 'committed' ELSE 'draft' END WHERE id = ?1",
                     datasetId);
}

std::string createVersion(World& world, const NewVersion& version)
{
    world.tables.run("INSERT INTO version (dataSetId, version, dataSetSourceFile, displayVersion, creationTime, status, description, "
                     "verifyStatus, metaInfo, size) VALUES (?, ?, ?, ?, ?, ?, ?, 'Success', ?, ?)",
                     version.datasetId, version.number, version.sourceFile, "V" + std::to_string(version.number), world.clock.text(),
                     version.status, version.description, version.metaInfo, version.size);
    const std::int64_t id = world.tables.lastRowId();
    if (version.documentVersion)
        world.tables.run("INSERT INTO versionMeta (versionId, name, value) VALUES (?, ?, ?)", id, documentVersionKey,
                         std::to_string(*version.documentVersion));
    refreshDataset(world, version.datasetId);
    return *world.tables.row(selectVersions + "WHERE id = ?", id);
}

NewVersion nextVersion(const Call& call, World& world)
{
    NewVersion version;
    version.datasetId = call.place("dsId");
    version.sourceFile = call.filledQuery("sourceFile");
    requireDataset(world, version.datasetId);
    version.number = nextNumber(world, version.datasetId);
    return version;
}

/// The failure text of an upload is no file in the store, so an upload that failed ends here.
std::int64_t sizeOfSource(const NewVersion& version, const std::optional<std::int64_t>& length)
{
    if (!length)
        throw Refusal(400, "the store has no such file: " + version.sourceFile);
    return *length;
}

Answer newVersion(const Call& call, World& world)
{
    NewVersion version = nextVersion(call, world);
    version.size = sizeOfSource(version, lengthOfPath(world, version.sourceFile));
    return enveloped(createVersion(world, version));
}

Answer newDocVersion(const Call& call, World& world)
{
    const json::Body body(call.body);
    NewVersion version = nextVersion(call, world);
    // "version" is the file's own count; the dataset's versions are numbered here.
    version.documentVersion = body.integer("version");
    version.size = sizeOfSource(version, lengthOfFile(world, version.sourceFile, *version.documentVersion));
    if (body.integer("length") != version.size)
        throw Refusal(400, "the file has another length than \"length\"");
    return enveloped(createVersion(world, version));
}

std::string readVersionStatus(const json::Body& body)
{
    std::string status = body.filledText("status");
    if (status != "Published" && status != "WIP")
        throw Refusal(400, "unknown version status: " + status);
    return status;
}

Answer newVersionByNumber(const Call& call, World& world)
{
    const json::Body body(call.body);
    NewVersion version;
    version.datasetId = call.place("datasetId");
    version.number = call.numberPlace("versionNum");
    version.metaInfo = body.textOr("metaInfo", {});
    version.status = readVersionStatus(body);
    version.description = body.textOr("description", {});
    if (version.number < 0 || version.number > highestNumber)
        throw Refusal(400, "a version's number must lie between 0 and " + std::to_string(highestNumber));
    requireDataset(world, version.datasetId);
    if (world.tables.integer("SELECT id FROM version WHERE dataSetId = ? AND version = ?", version.datasetId, version.number))
        throw Refusal(409, "the dataset has version " + std::to_string(version.number) + " already");
    return enveloped(createVersion(world, version));
}

/// A document's own count is told where it is another than the number of the dataset's version.
std::string withDocumentVersion(World& world, const std::string& record)
{
    const json::Body version(record);
    const auto own = world.tables.integer("SELECT CAST(value AS INTEGER) FROM versionMeta WHERE versionId = ? AND name = ?",
                                          version.integer("id"), documentVersionKey);
    if (!own || *own == version.integer("version"))
        return record;
    return record.substr(0, record.size() - 1) + ",\"" + documentVersionKey + "\":" + std::to_string(*own) + "}";
}

Answer oneVersion(const Call& call, World& world)
{
    const std::string& datasetId = call.place("dsId");
    requireDataset(world, datasetId);
    const std::string success = call.query("onlySuccess") == "true" ? "AND verifyStatus = 'Success' " : "";
    const auto found =
        call.place("dsVersion") == "latest"
            ? world.tables.row(selectVersions + "WHERE dataSetId = ? " + success + "ORDER BY version DESC LIMIT 1", datasetId)
            : world.tables.row(selectVersions + "WHERE dataSetId = ? " + success + "AND version = ?", datasetId,
                               call.numberPlace("dsVersion"));
    if (!found)
        throw Refusal(404, "the dataset has no such version: " + call.place("dsVersion"));
    return enveloped(withDocumentVersion(world, *found));
}

std::string integerArray(const std::vector<std::int64_t>& numbers)
{
    std::string all;
    for (const std::int64_t number : numbers)
        all += (all.empty() ? "" : ",") + std::to_string(number);
    return "[" + all + "]";
}

Answer versionsByIds(const Call& call, World& world)
{
    call.filledQuery("mvd");
    const std::string ids = integerArray(json::readIntegerArray(call.body));
    return enveloped(world.tables.rows(selectVersions + "WHERE id IN (SELECT value FROM json_each(?)) ORDER BY id", ids));
}

Answer markPublish(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string& datasetId = call.place("dsId");
    requireDataset(world, datasetId);
    const int marked = world.tables.run("UPDATE version SET status = 'Published', description = ? WHERE dataSetId = ? AND version = ?",
                                        body.textOr("description", {}), datasetId, call.numberPlace("version"));
    if (marked == 0)
        throw Refusal(404, "the dataset has no such version: " + call.place("version"));
    refreshDataset(world, datasetId);
    return enveloped("true");
}

/// The id of a version, not its number in its dataset.
int versionIdOf(const Call& call, World& world)
{
    const int id = call.numberPlace("versionId");
    if (!world.tables.integer("SELECT id FROM version WHERE id = ?", id))
        throw Refusal(404, "no such version: " + call.place("versionId"));
    return id;
}

/// The bare value, which is no JSON.
Answer versionMeta(const Call& call, World& world)
{
    const std::string key = call.filledQuery("key");
    const auto value = world.tables.text("SELECT value FROM versionMeta WHERE versionId = ? AND name = ?", versionIdOf(call, world), key);
    if (!value)
        throw Refusal(404, "the version has no metadata of that key: " + key);
    return {200, *value, "text/plain; charset=utf-8"};
}

Answer keepVersionMeta(const Call& call, World& world)
{
    const int id = versionIdOf(call, world);
    if (!json::isJsonObject(call.body) || *world.tables.integer("SELECT COUNT(*) FROM json_each(?)", call.body) != 1 ||
        world.tables.run("INSERT OR REPLACE INTO versionMeta (versionId, name, value) SELECT ?1, key, atom FROM json_each(?2) "
                         "WHERE type = 'text' AND key <> ''",
                         id, call.body) != 1)
        throw Refusal(400, "the body must be an object with one member, a text");
    return done();
}

} // namespace

void addVersionRoutes(Router& router)
{
    router.add("PUT", "/dataset/{dsId}/version", newVersion);
    router.add("PUT", "/dataset/{dsId}/doc/version", newDocVersion);
    router.add("POST", "/datasets/{datasetId}/versions/{versionNum}/create", newVersionByNumber);
    router.add("GET", "/v2/datasets/{dsId}/version/{dsVersion}", oneVersion);
    router.add("POST", "/v2/versions/byids", versionsByIds);
    router.add("POST", "/datasets/{dsId}/{version}/markPublish", markPublish);
    router.add("GET", "/version/{versionId}/meta", versionMeta);
    router.add("POST", "/version/{versionId}/meta", keepVersionMeta);
}

} // namespace orlo::platform
