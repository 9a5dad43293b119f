#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

constexpr const char* itemType = "SubItem";
/// What an item has of its own, as addresses name it.
constexpr std::array itemConfigTypes = {"SpaceConfig", "GridConfig", "Coordinate"};
/// In the place of a version.
constexpr int newest = -1;

std::int64_t revisionOf(World& world, const std::string& projectId)
{
    requireProject(world, projectId);
    return *world.tables.integer("SELECT itemRevision FROM project WHERE id = ?", projectId);
}

/// The items as they were at a revision, each with that revision.
std::string itemsAt(World& world, const std::string& projectId, std::int64_t revision)
{
    return world.tables.rows("SELECT CAST(item.id AS TEXT) AS id, version, ?2 AS revision, configValue, birthTime, creationTime "
                             "FROM buildingItem AS item JOIN buildingItemVersion AS itemVersion ON itemId = item.id "
                             "WHERE projectId = ?1 AND (removedAt IS NULL OR removedAt > ?2) AND itemVersion.revision = "
                             "(SELECT MAX(revision) FROM buildingItemVersion WHERE itemId = item.id AND revision <= ?2) ORDER BY item.id",
                             projectId, revision);
}

/// An item that was deleted has its versions still, and nothing else. Refused with 404 if it isn't there.
std::int64_t findItem(World& world, const std::string& projectId, const std::string& subItemId, bool withDeleted = false)
{
    const auto id = world.tables.integer("SELECT id FROM buildingItem WHERE projectId = ? AND CAST(id AS TEXT) = ? AND (? OR removedAt "
                                         "IS NULL)",
                                         projectId, subItemId, static_cast<int>(withDeleted));
    if (!id)
        throw Refusal(404, "no such building item: " + subItemId);
    return *id;
}

std::int64_t itemOf(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return findItem(world, call.place("projectId"), call.place("subItemId"));
}

void requireDocument(const Call& call)
{
    if (!json::isJsonObject(call.body))
        throw Refusal(400, "the body must be a JSON object");
}

/// A writer names the revision that it has read, which is 0 where there were no items, even if there have been some.
/// Returns: the revision that begins now.
std::int64_t beginChange(const Call& call, World& world)
{
    const std::string& projectId = call.place("projectId");
    const std::int64_t current = revisionOf(world, projectId);
    requireWriter(world, projectId, call.caller.accountId);
    const int read = call.numberPlace("revision");
    const bool foundNone = read == 0 && itemsAt(world, projectId, current) == "[]";
    if (read != current && !foundNone)
        throw Refusal(409, "the revision is " + std::to_string(current) + " now, not " + std::to_string(read));
    world.tables.run("UPDATE project SET itemRevision = ? WHERE id = ?", current + 1, projectId);
    return current + 1;
}

Answer addItemVersion(const Call& call, World& world, std::int64_t itemId, std::int64_t revision)
{
    requireDocument(call);
    world.tables.run("INSERT INTO buildingItemVersion (itemId, version, revision, configValue, author, creationTime) "
                     "SELECT ?1, COALESCE(MAX(version), 0) + 1, ?2, ?3, ?4, ?5 FROM buildingItemVersion WHERE itemId = ?1",
                     itemId, revision, call.body, call.caller.accountId, world.clock.text());
    return enveloped(*world.tables.row("SELECT CAST(itemId AS TEXT) AS id, version, revision FROM buildingItemVersion "
                                       "WHERE itemId = ? AND revision = ?",
                                       itemId, revision));
}

Answer addItem(const Call& call, World& world)
{
    const std::int64_t revision = beginChange(call, world);
    world.tables.run("INSERT INTO buildingItem (projectId, birthTime) VALUES (?, ?)", call.place("projectId"), world.clock.text());
    return addItemVersion(call, world, world.tables.lastRowId(), revision);
}

Answer updateItem(const Call& call, World& world)
{
    const std::int64_t revision = beginChange(call, world);
    return addItemVersion(call, world, itemOf(call, world), revision);
}

Answer deleteItem(const Call& call, World& world)
{
    const std::int64_t revision = beginChange(call, world);
    const std::int64_t id = itemOf(call, world);
    world.tables.run("UPDATE buildingItem SET removedAt = ? WHERE id = ?", revision, id);
    world.tables.run("DELETE FROM itemBinding WHERE itemId = ?", id);
    return enveloped(json::Object().number("revision", revision).str());
}

Answer itemsOfRevision(const Call& call, World& world)
{
    const std::string& projectId = call.place("projectId");
    const int revision = call.numberPlace("revision");
    if (revision < 0 || revision > revisionOf(world, projectId))
        throw Refusal(404, "there is no such revision of the building items: " + std::to_string(revision));
    return enveloped(itemsAt(world, projectId, revision));
}

Answer oneItem(World& world, std::int64_t itemId, int version)
{
    const auto found = world.tables.row("SELECT CAST(item.id AS TEXT) AS id, version, configValue, birthTime, creationTime FROM "
                                        "buildingItem AS item JOIN buildingItemVersion ON itemId = item.id WHERE item.id = ?1 AND "
                                        "(version = ?2 OR ?2 = -1) ORDER BY version DESC LIMIT 1",
                                        itemId, version);
    if (!found)
        throw Refusal(404, "the building item has no such version: " + std::to_string(version));
    return enveloped(*found);
}

Answer itemVersion(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    const std::int64_t itemId = findItem(world, call.place("projectId"), call.place("subItemId"), true);
    return oneItem(world, itemId, call.numberPlace("version"));
}

Answer latestItem(const Call& call, World& world)
{
    return oneItem(world, itemOf(call, world), newest);
}

// The configurations of an item

const std::string selectItemConfig =
    "SELECT CAST(itemId AS TEXT) AS scopeEntityId, version, configValue, creationTime, (SELECT creationTime FROM itemConfig AS born "
    "WHERE born.itemId = itemConfig.itemId AND born.configType = itemConfig.configType AND born.version = 1) AS birthTime "
    "FROM itemConfig WHERE itemId = ?1 AND configType = ?2 AND (version = ?3 OR ?3 = -1) ORDER BY version DESC LIMIT 1";

const std::string& itemConfigTypeOf(const Call& call)
{
    const std::string& type = call.place("configType");
    requireOneOf(itemConfigTypes, type, "config type of a building item");
    return type;
}

/// version: the one that the writer has read, 0 for none.
Answer addConfigVersion(const Call& call, World& world, std::int64_t version)
{
    const std::string& type = itemConfigTypeOf(call);
    const std::int64_t itemId = itemOf(call, world);
    requireWriter(world, call.place("projectId"), call.caller.accountId);
    requireDocument(call);
    const std::int64_t current =
        *world.tables.integer("SELECT COALESCE(MAX(version), 0) FROM itemConfig WHERE itemId = ? AND configType = ?", itemId, type);
    if (version != current)
        throw Refusal(409, "the configuration has version " + std::to_string(current) + " now, not " + std::to_string(version));
    world.tables.run("INSERT INTO itemConfig (itemId, configType, version, configValue, author, creationTime) VALUES (?, ?, ?, ?, ?, ?)",
                     itemId, type, current + 1, call.body, call.caller.accountId, world.clock.text());
    return enveloped(json::Object().text("scopeEntityId", std::to_string(itemId)).number("version", current + 1).str());
}

Answer createItemConfig(const Call& call, World& world)
{
    return addConfigVersion(call, world, 0);
}

Answer updateItemConfig(const Call& call, World& world)
{
    const int version = call.numberPlace("version");
    if (version < 1)
        throw Refusal(400, "versions count from 1");
    return addConfigVersion(call, world, version);
}

Answer itemConfigVersion(const Call& call, World& world)
{
    const std::string& type = itemConfigTypeOf(call);
    requireProject(world, call.place("projectId"));
    const std::int64_t itemId = findItem(world, call.place("projectId"), call.place("subItemId"), true);
    const auto found = world.tables.row(selectItemConfig, itemId, type, call.numberPlace("version"));
    if (!found)
        throw Refusal(404, "there is no such version of the configuration: " + call.place("version"));
    return enveloped(*found);
}

/// A project binds its items, an item its configurations.
Answer latestOfBinder(const Call& call, World& world)
{
    const std::string& projectId = call.place("projectId");
    const std::string& binder = call.place("bindId");
    const std::int64_t revision = revisionOf(world, projectId);
    if (call.place("configType") == itemType && binder == projectId)
        return enveloped(itemsAt(world, projectId, revision));
    const std::string& type = itemConfigTypeOf(call);
    return enveloped(world.tables.rows(selectItemConfig, findItem(world, projectId, binder), type, newest));
}

// Datasets bound to items

void requireItemType(const std::string& type)
{
    if (type != itemType)
        throw Refusal(400, "datasets are bound to building items: " + type);
}

Answer bindDataset(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string projectId = body.filledText("projectId");
    const std::string datasetId = body.filledText("dataId");
    requireItemType(body.text("configType"));
    requireProject(world, projectId);
    requireWriter(world, projectId, call.caller.accountId);
    const std::int64_t itemId = findItem(world, projectId, body.filledText("cfgId"));
    if (!world.tables.text("SELECT id FROM dataset WHERE id = ? AND projectId = ?", datasetId, projectId))
        throw Refusal(404, "no such dataset in the project: " + datasetId);
    world.tables.run("INSERT OR IGNORE INTO itemBinding (itemId, datasetId) VALUES (?, ?)", itemId, datasetId);
    return done();
}

/// key: the query that tells whose bindings; column: what it is compared with.
Answer bindingsWhere(const Call& call, World& world, const std::string& key, const std::string& column)
{
    requireItemType(call.query("type"));
    requireProject(world, call.filledQuery("projectId"));
    return enveloped(world.tables.rows("SELECT itemId AS cfgId, datasetId AS dataId, 'SubItem' AS configType, projectId FROM itemBinding "
                                       "JOIN buildingItem ON buildingItem.id = itemId WHERE projectId = ? AND " +
                                           column + " = ? ORDER BY itemBinding.rank",
                                       call.filledQuery("projectId"), call.filledQuery(key)));
}

Answer itemsOfDataset(const Call& call, World& world)
{
    return bindingsWhere(call, world, "dataId", "datasetId");
}

Answer datasetsOfItem(const Call& call, World& world)
{
    return bindingsWhere(call, world, "cfgId", "CAST(itemId AS TEXT)");
}

} // namespace

void addItemRoutes(Router& router)
{
    router.add("POST", "/v2/{projectId}/sub_item/{revision}", addItem);
    router.add("PUT", "/v2/{projectId}/sub_item/{subItemId}/{revision}", updateItem);
    router.add("DELETE", "/v2/{projectId}/sub_item/{subItemId}/{revision}", deleteItem);
    router.add("GET", "/v2/{projectId}/sub_item/revision/{revision}", itemsOfRevision);
    router.add("GET", "/v2/{projectId}/sub_item/{subItemId}/version/{version}", itemVersion);
    router.add("GET", "/v2/{projectId}/sub_item/{subItemId}/latest", latestItem);
    router.add("POST", "/v2/{projectId}/sub_item/{subItemId}/config/type/{configType}", createItemConfig);
    router.add("PUT", "/v2/{projectId}/config/subItem/{subItemId}/type/{configType}/version/{version}", updateItemConfig);
    router.add("GET", "/v2/{projectId}/config/{subItemId}/{configType}/version/{version}", itemConfigVersion);
    router.add("GET", "/v2/{projectId}/config/binder/{bindId}/type/{configType}/latest", latestOfBinder);
    router.add("POST", "/design/config/data/bind", bindDataset);
    router.add("GET", "/design/config/data/by/design", itemsOfDataset);
    router.add("GET", "/design/config/data/by/cfg", datasetsOfItem);
}

} // namespace orlo::platform
