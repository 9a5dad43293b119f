#include "../Store/Clock.h"
#include "../Store/Json.h"
#include "../Store/Signing.h"
#include "../Store/Store.h"
#include "../Store/Transfers.h"
#include "Files.h"
#include "Projects.h"
#include "Routes.h"

#include <charconv>

namespace orlo::platform {

namespace {

/// In the place of a version: the one that the project has.
constexpr int heldVersion = -1;
/// Ids that clients choose lie below, so that there is always a further one.
constexpr std::int64_t endOfIds = std::int64_t{1} << 62;

// The beginnings of addresses that clients are handed out.
constexpr const char* picturePaths = "/structural/pictures/";
constexpr const char* familyPaths = "/structural/families/";

/// What a version of a component holds.
struct Edition
{
    std::int64_t id = 0;
    std::string name;
    std::string categoryCode;
    std::string familyTypes; ///< a JSON array of objects with "name" and "parameters"
    std::string xml;         ///< empty: made of the rest
    std::string blobId;      ///< of the uploaded file; empty: the XML stands for it
};

/// A component of a project.
struct HeldComponent
{
    std::int64_t rank = 0;
    std::int64_t id = 0;
    std::int64_t publicId = 0; ///< 0 for one that was uploaded
    int version = 0;
};

std::int64_t longNumber(const std::string& text, const std::string& name)
{
    std::int64_t value = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (failure != std::errc() || end != text.data() + text.size())
        throw Refusal(400, "\"" + name + "\" must be an integer");
    return value;
}

std::int64_t nowInMilliseconds(World& world)
{
    return *world.tables.integer("SELECT CAST(ROUND((julianday(?) - 2440587.5) * 86400000) AS INTEGER)", world.clock.text());
}

std::string escaped(const std::string& text)
{
    std::string result;
    for (const char c : text) {
        switch (c) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

// Editions

void requireCategory(World& world, const std::string& code)
{
    if (!world.tables.text("SELECT code FROM componentCategory WHERE code = ?", code))
        throw Refusal(400, "no such category: " + code);
}

/// Refuses with 400 what isn't an array of objects with a name each, and an object of parameters or none.
void requireFamilyTypes(World& world, const std::string& array)
{
    const bool isGood = json::isJsonArray(array) &&
                        *world.tables.integer("SELECT COUNT(*) FROM json_each(?) WHERE type <> 'object'", array) == 0 &&
                        *world.tables.integer("SELECT COUNT(*) FROM json_each(?) WHERE json_type(value, '$.name') IS NOT 'text' OR "
                                              "COALESCE(json_type(value, '$.parameters'), 'object') <> 'object'",
                                              array) == 0;
    if (!isGood)
        throw Refusal(400, "\"familyTypes\" must be an array of objects with \"name\" and \"parameters\"");
}

/// projectId: of an upload; empty for the catalogue.   Returns the id.
std::int64_t addEdition(World& world, const Edition& edition, const std::string& projectId)
{
    if (edition.name.empty())
        throw Refusal(400, "a component needs a name");
    requireCategory(world, edition.categoryCode);
    requireFamilyTypes(world, edition.familyTypes);
    world.tables.run("INSERT INTO componentEdition (projectId, name, categoryCode, familyTypes, xml, blobId) VALUES (NULLIF(?, ''), ?, ?, "
                     "?, ?, NULLIF(?, ''))",
                     projectId, edition.name, edition.categoryCode, edition.familyTypes, edition.xml, edition.blobId);
    return world.tables.lastRowId();
}

std::int64_t addUploadedEdition(const Call& call, World& world)
{
    const json::Body body(call.body);
    Edition edition;
    edition.name = body.filledText("name");
    edition.categoryCode = body.filledText("categoryCode");
    edition.familyTypes = body.rawOr("familyTypes", "[]");
    edition.xml = body.textOr("xml", {});
    if (body.has("fileOSSPath"))
        edition.blobId = blobOfPath(world, body.filledText("fileOSSPath"));
    return addEdition(world, edition, call.place("projectId"));
}

Edition editionOf(World& world, std::int64_t id)
{
    Edition edition;
    const auto take = [&](SQLite::Statement& row) {
        edition = {row.getColumn(0).getInt64(),  row.getColumn(1).getString(), row.getColumn(2).getString(),
                   row.getColumn(3).getString(), row.getColumn(4).getString(), row.getColumn(5).getString()};
    };
    world.tables.each(take, "SELECT id, name, categoryCode, familyTypes, xml, blobId FROM componentEdition WHERE id = ?", id);
    if (edition.id == 0)
        throw Refusal(404, "no such component");
    return edition;
}

std::string xmlOf(World& world, const Edition& edition)
{
    if (!edition.xml.empty())
        return edition.xml;
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>)"
                      "\n<component name=\"" +
                      escaped(edition.name) + "\" category=\"" + escaped(edition.categoryCode) + "\">\n";
    const auto add = [&](SQLite::Statement& row) {
        xml += "  <parameter familyType=\"" + escaped(row.getColumn(0).getString()) + "\" name=\"" + escaped(row.getColumn(1).getString()) +
               "\" value=\"" + escaped(row.getColumn(2).getString()) + "\"/>\n";
    };
    world.tables.each(add,
                      "SELECT json_extract(familyType.value, '$.name'), parameter.key, parameter.value FROM json_each(?) AS familyType, "
                      "json_each(familyType.value, '$.parameters') AS parameter ORDER BY familyType.id, parameter.id",
                      edition.familyTypes);
    return xml + "</component>\n";
}

// Addresses

std::string signedPath(const World& world, const std::string& path)
{
    return world.url + path + "?" + world.signer.query("GET", path, world.clock.seconds() + world.transfers.signedLifetime());
}

std::string pictureAddress(const World& world, std::int64_t editionId, const std::string& side)
{
    return signedPath(world, picturePaths + std::to_string(editionId) + "/" + side);
}

std::string thumbnailOf(const World& world, std::int64_t editionId)
{
    return pictureAddress(world, editionId, "128");
}

Answer pictureOfEdition(const Call& call, World& world)
{
    const Edition edition = editionOf(world, call.numberPlace("editionId"));
    const std::string side = std::to_string(call.numberPlace("side"));
    return {200,
            R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 100 100" width=")" + side + "\" height=\"" + side +
                R"("><rect width="100" height="100" fill="#dde6ee"/><text x="50" y="54" font-size="8" text-anchor="middle">)" +
                escaped(edition.name) + "</text></svg>",
            "image/svg+xml"};
}

Answer fileOfEdition(const Call& call, World& world)
{
    return {200, xmlOf(world, editionOf(world, call.numberPlace("editionId"))), "application/xml"};
}

// The components of a project

/// Refused with 404 if it isn't there.
HeldComponent findComponent(const Call& call, World& world)
{
    HeldComponent found;
    const auto take = [&](SQLite::Statement& row) {
        found = {row.getColumn(0).getInt64(), row.getColumn(1).getInt64(), row.getColumn(2).getInt64(), row.getColumn(3).getInt()};
    };
    requireProject(world, call.place("projectId"));
    world.tables.each(take,
                      "SELECT rank, id, publicId, version FROM component WHERE projectId = ? AND CAST(id AS TEXT) = ? AND removed = 0",
                      call.place("projectId"), call.place("suiteId"));
    if (found.rank == 0)
        throw Refusal(404, "no such component: " + call.place("suiteId"));
    return found;
}

Edition findEdition(World& world, HeldComponent& component, int version)
{
    if (version != heldVersion)
        component.version = version;
    const auto id = world.tables.integer("SELECT editionId FROM componentVersion WHERE componentRank = ? AND version = ?", component.rank,
                                         component.version);
    if (!id)
        throw Refusal(404, "the component has no such version: " + std::to_string(version));
    return editionOf(world, *id);
}

/// version: names what is asked for, in the path or the query.
Edition editionAsked(const Call& call, World& world, int version)
{
    HeldComponent component = findComponent(call, world);
    return findEdition(world, component, version);
}

int versionOfQuery(const Call& call)
{
    return readNumber(call.filledQuery("version"), "version");
}

json::Object recordOf(const World& world, const HeldComponent& component, const Edition& edition)
{
    json::Object record;
    record.text("id", std::to_string(component.id))
        .text("publicComponentId", component.publicId ? std::to_string(component.publicId) : "")
        .number("version", component.version)
        .text("name", edition.name)
        .text("categoryCode", edition.categoryCode)
        .text("thumbnail", thumbnailOf(world, edition.id))
        .text("status", "NORMAL");
    return record;
}

/// The project has a further version of the component from now on.
void giveVersion(World& world, HeldComponent& component, int version, std::int64_t editionId)
{
    component.version = version;
    world.tables.run("INSERT OR REPLACE INTO componentVersion (componentRank, version, editionId) VALUES (?, ?, ?)", component.rank,
                     version, editionId);
    world.tables.run("UPDATE component SET version = ?, changedAt = ? WHERE rank = ?", version, nowInMilliseconds(world), component.rank);
}

/// A component that was removed comes back as a new one.
HeldComponent insertComponent(World& world, const std::string& projectId, std::int64_t id, std::int64_t publicId, int version,
                              std::int64_t editionId)
{
    const std::int64_t now = nowInMilliseconds(world);
    world.tables.run("INSERT INTO component (projectId, id, publicId, version, addedAt, changedAt) VALUES (?1, ?2, NULLIF(?3, 0), ?4, ?5, "
                     "?5) ON CONFLICT DO UPDATE SET addedAt = ?5, removed = 0",
                     projectId, id, publicId, version, now);
    HeldComponent component{*world.tables.integer("SELECT rank FROM component WHERE projectId = ? AND id = ?", projectId, id), id, publicId,
                            version};
    giveVersion(world, component, version, editionId);
    return component;
}

std::optional<std::int64_t> publicEdition(World& world, std::int64_t publicId, int version)
{
    return world.tables.integer("SELECT editionId FROM publicComponentVersion WHERE componentId = ? AND version = ?", publicId, version);
}

/// Refused with 404 if there is no such component.
int publicVersion(World& world, const std::string& publicId)
{
    const auto version = world.tables.integer("SELECT version FROM publicComponent WHERE CAST(id AS TEXT) = ?", publicId);
    if (!version)
        throw Refusal(404, "no such public component: " + publicId);
    return static_cast<int>(*version);
}

// Listings

/// The components that fit, each with the edition that it has; conditions follow.
const std::string fromComponents = " FROM component JOIN componentVersion AS held ON held.componentRank = component.rank AND "
                                   "held.version = component.version JOIN componentEdition AS edition ON edition.id = held.editionId "
                                   "JOIN componentCategory AS category ON category.code = categoryCode WHERE component.projectId = ?1 AND "
                                   "removed = 0 ";
/// The same for those of a list (?2) whose public component has a newer version, with the edition of that.
const std::string fromRenewables =
    " FROM json_each(?2) AS asked JOIN component ON component.id = json_extract(asked.value, '$.id') "
    "JOIN publicComponent AS public ON public.id = publicId JOIN publicComponentVersion AS newest ON newest.componentId = public.id AND "
    "newest.version = public.version JOIN componentEdition AS edition ON edition.id = newest.editionId JOIN componentCategory AS category "
    "ON category.code = categoryCode WHERE component.projectId = ?1 AND removed = 0 AND public.version > "
    "CASE json_extract(asked.value, '$.version') WHEN -1 THEN component.version ELSE json_extract(asked.value, '$.version') END "
    "AND ?3 IN (category.major, -1) ";
const std::string withKeyword = "AND instr(lower(edition.name), lower(?)) > 0 ";

std::string arrayOf(const std::vector<std::string>& elements)
{
    std::string all;
    for (const std::string& element : elements)
        all += (all.empty() ? "" : ",") + element;
    return "[" + all + "]";
}

/// One record for each row of id, publicId, version, editionId.
template <class... Values>
std::string recordsOf(World& world, const std::string& rest, const Values&... values)
{
    std::vector<std::pair<HeldComponent, std::int64_t>> found;
    const auto take = [&](SQLite::Statement& row) {
        found.push_back(
            {{0, row.getColumn(0).getInt64(), row.getColumn(1).getInt64(), row.getColumn(2).getInt()}, row.getColumn(3).getInt64()});
    };
    world.tables.each(take, rest, values...);
    std::vector<std::string> records;
    for (const auto& [component, editionId] : found)
        records.push_back(recordOf(world, component, editionOf(world, editionId)).str());
    return arrayOf(records);
}

/// Categories with the count of components in them and below.
/// tops: which to tell, with what is below them; an empty array for all.   counted: the category of each component that counts.
std::string treeOf(World& world, const std::string& tops, const std::vector<std::string>& counted, bool withEmptyOnes)
{
    return world.tables.rows(
        "SELECT id, parentId, name, weight, count, level, code, parentCode FROM (SELECT category.id AS id, COALESCE(parent.id, 0) AS "
        "parentId, category.name AS name, category.weight AS weight, (SELECT COUNT(*) FROM json_each(?2) AS one JOIN categoryBelow ON "
        "categoryBelow.code = one.value AND top = category.code) AS count, (SELECT COUNT(*) FROM categoryBelow WHERE code = category.code) "
        "AS level, category.code AS code, category.parentCode AS parentCode FROM componentCategory AS category LEFT JOIN componentCategory "
        "AS parent ON parent.code = category.parentCode) WHERE (?1 = '[]' OR code IN (SELECT code FROM categoryBelow WHERE top IN (SELECT "
        "value FROM json_each(?1)))) AND (?3 OR count > 0) ORDER BY code",
        tops, json::array(counted), static_cast<int>(withEmptyOnes));
}

/// Refuses with 400 what isn't an array of objects with the integers "id" and "version".
std::string heldOf(World& world, const std::string& array)
{
    const bool isGood = json::isJsonArray(array) &&
                        *world.tables.integer("SELECT COUNT(*) FROM json_each(?) WHERE type <> 'object'", array) == 0 &&
                        *world.tables.integer("SELECT COUNT(*) FROM json_each(?) WHERE json_type(value, '$.id') IS NOT 'integer' OR "
                                              "json_type(value, '$.version') IS NOT 'integer'",
                                              array) == 0;
    if (!isGood)
        throw Refusal(400, "components must be an array of objects with the integers \"id\" and \"version\"");
    return array;
}

Answer categoryCodes(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(json::array(world.tables.texts("SELECT code FROM componentCategory WHERE ?1 IN (major, -1) ORDER BY code",
                                                    readNumber(call.filledQuery("major"), "major"))));
}

Answer categoryTree(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string& projectId = call.place("projectId");
    body.text("softwareVersion"); // what is kept here fits every version
    requireProject(world, projectId);
    return enveloped(treeOf(world, json::array(body.texts("categoryCodes")),
                            world.tables.texts("SELECT categoryCode" + fromComponents + withKeyword, projectId, body.text("keyword")),
                            true));
}

Answer renewableTree(const Call& call, World& world)
{
    const json::Body body(call.body);
    requireProject(world, call.place("projectId"));
    const auto counted =
        world.tables.texts("SELECT categoryCode" + fromRenewables + withKeyword, call.place("projectId"),
                           heldOf(world, body.rawOr("projectComponentRequestBeans", {})), body.integer("major"), body.text("keyword"));
    return enveloped(treeOf(world, "[]", counted, false));
}

Answer searchComponents(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string projectId = body.filledText("projectId");
    const std::string codes = json::array(body.texts("categoryCodes"));
    const std::string keyword = body.text("keyword");
    const std::int64_t page = body.integer("page");
    const std::int64_t pageSize = body.integer("pageSize");
    requireProject(world, projectId);
    if (page < 1 || pageSize < 1 || pageSize > 1000 || page > 1000000)
        throw Refusal(400, "pages count from 1, and have 1 to 1000 components");
    const std::string fitting = fromComponents +
                                "AND (?2 = '[]' OR categoryCode IN (SELECT code FROM categoryBelow WHERE top IN (SELECT value FROM "
                                "json_each(?2)))) " +
                                withKeyword;
    const std::string list = recordsOf(
        world, "SELECT component.id, publicId, component.version, edition.id" + fitting + "ORDER BY component.rank LIMIT ? OFFSET ?",
        projectId, codes, keyword, pageSize, (page - 1) * pageSize);
    return enveloped(json::Object()
                         .number("totalCount", *world.tables.integer("SELECT COUNT(*)" + fitting, projectId, codes, keyword))
                         .raw("list", list)
                         .str());
}

Answer searchRenewables(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(recordsOf(world,
                               "SELECT component.id, publicId, public.version, edition.id" + fromRenewables +
                                   "AND (?4 = '' OR categoryCode IN (SELECT code FROM categoryBelow WHERE top = ?4)) " + withKeyword +
                                   "ORDER BY component.rank",
                               call.place("projectId"), heldOf(world, call.body), readNumber(call.filledQuery("major"), "major"),
                               call.query("category_code"), call.query("keyword")));
}

/// What came and went within the same time isn't told.
Answer changedComponents(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    const std::string changed = world.tables.rows(
        "SELECT component.id AS id, component.version AS version, edition.name AS name, CASE WHEN removed THEN 'DELETE' WHEN addedAt > ?2 "
        "THEN 'ADD' ELSE 'UPDATE' END AS updateStatus FROM component JOIN componentVersion AS held ON held.componentRank = component.rank "
        "AND held.version = component.version JOIN componentEdition AS edition ON edition.id = held.editionId JOIN componentCategory AS "
        "category ON category.code = categoryCode WHERE component.projectId = ?1 AND changedAt > ?2 AND NOT (removed AND addedAt > ?2) AND "
        "?3 IN (category.major, -1) ORDER BY changedAt, component.rank",
        call.place("projectId"), longNumber(call.filledQuery("time"), "time"), readNumber(call.filledQuery("major"), "major"));
    return enveloped(json::Object().number("time", nowInMilliseconds(world)).raw("updateComponents", changed).str());
}

// One component

Answer componentDetail(const Call& call, World& world)
{
    HeldComponent component = findComponent(call, world);
    const int held = component.version;
    const Edition edition = findEdition(world, component, call.numberPlace("version"));
    const bool isRenewable = component.publicId && publicVersion(world, std::to_string(component.publicId)) > held;
    std::vector<std::string> sizes;
    for (const char* side : {"128", "512"})
        sizes.push_back(json::Object().text("size", side).raw("thumbnails", json::array({pictureAddress(world, edition.id, side)})).str());
    return enveloped(
        recordOf(world, component, edition)
            .number("source", component.publicId ? 0 : 1)
            .number("categoryId", *world.tables.integer("SELECT id FROM componentCategory WHERE code = ?", edition.categoryCode))
            .raw("familyTypeNames",
                 json::array(world.tables.texts("SELECT json_extract(value, '$.name') FROM json_each(?)", edition.familyTypes)))
            .raw("thumbnailSizes", arrayOf(sizes))
            .text("updateStatus", isRenewable ? "UPDATABLE" : "NEWEST")
            .str());
}

Answer componentExists(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    const auto found = world.tables.integer("SELECT rank FROM component WHERE projectId = ? AND CAST(id AS TEXT) = ? AND removed = 0",
                                            call.place("projectId"), call.place("id"));
    return enveloped(json::Object().flag("exist", found.has_value()).str());
}

Answer familyType(const Call& call, World& world)
{
    const Edition edition = editionAsked(call, world, call.numberPlace("version"));
    const std::string name = call.filledQuery("name");
    const auto found =
        world.tables.text("SELECT value FROM json_each(?) WHERE json_extract(value, '$.name') = ?", edition.familyTypes, name);
    if (!found)
        throw Refusal(404, "the component has no such family type: " + name);
    return enveloped(*found);
}

Answer familyTypes(const Call& call, World& world)
{
    return enveloped(json::Object().raw("familyTypes", editionAsked(call, world, versionOfQuery(call)).familyTypes).str());
}

/// Each version has two.
Answer cutlines(const Call& call, World& world)
{
    const Edition edition = editionAsked(call, world, versionOfQuery(call));
    const auto cutline = [&](int number, const std::string& name, const std::string& type) {
        return json::Object()
            .number("id", edition.id * 10 + number)
            .text("name", name)
            .text("thumbnail", thumbnailOf(world, edition.id))
            .text("placeholderType", type)
            .str();
    };
    return enveloped(arrayOf({cutline(1, "平面 Plan", "PLAN"), cutline(2, "立面 Elevation", "ELEVATION")}));
}

Answer componentFile(const Call& call, World& world)
{
    const Edition edition = editionAsked(call, world, call.numberPlace("version"));
    return enveloped(json::quote(edition.blobId.empty() ? signedPath(world, familyPaths + std::to_string(edition.id))
                                                        : signedAddress(world, "GET", edition.blobId)));
}

Answer componentXml(const Call& call, World& world)
{
    return {200, xmlOf(world, editionAsked(call, world, versionOfQuery(call))), "application/xml"};
}

// Changes

HeldComponent componentToChange(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    requireWriter(world, call.place("projectId"), call.caller.accountId);
    return findComponent(call, world);
}

/// What isn't there is not deleted, which is no failure.
Answer deleteComponent(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    requireWriter(world, call.place("projectId"), call.caller.accountId);
    const int deleted =
        world.tables.run("UPDATE component SET removed = 1, changedAt = ? WHERE projectId = ? AND CAST(id AS TEXT) = ? AND removed = 0",
                         nowInMilliseconds(world), call.place("projectId"), call.place("suiteId"));
    return enveloped(deleted ? "true" : "false");
}

/// What came from the catalogue gets a newer version of it, the newest unless the body names one; what was uploaded gets what is uploaded
/// now.
Answer upgradeComponent(const Call& call, World& world)
{
    HeldComponent component = componentToChange(call, world);
    if (!component.publicId) {
        giveVersion(world, component, component.version + 1, addUploadedEdition(call, world));
    }
    else {
        const std::int64_t version = json::Body(call.body).integerOr("version", publicVersion(world, std::to_string(component.publicId)));
        if (version <= component.version)
            throw Refusal(409, "the component has version " + std::to_string(component.version) + " already");
        const auto edition = world.tables.integer("SELECT editionId FROM publicComponentVersion WHERE componentId = ? AND version = ?",
                                                  component.publicId, version);
        if (!edition)
            throw Refusal(404, "the public component has no such version: " + std::to_string(version));
        giveVersion(world, component, static_cast<int>(version), *edition);
    }
    return enveloped(recordOf(world, component, findEdition(world, component, heldVersion)).str());
}

Answer uploadComponent(const Call& call, World& world)
{
    const std::string& projectId = call.place("projectId");
    requireProject(world, projectId);
    requireWriter(world, projectId, call.caller.accountId);
    const std::int64_t editionId = addUploadedEdition(call, world);
    const std::int64_t id = *world.tables.integer("SELECT COALESCE(MAX(id), 0) + 1 FROM component WHERE projectId = ?", projectId);
    return enveloped(recordOf(world, insertComponent(world, projectId, id, 0, 1, editionId), editionOf(world, editionId)).str());
}

void takeComponent(World& world, const std::string& projectId, const std::string& publicId, const std::string& id)
{
    const std::int64_t number = longNumber(id, "id");
    if (number < 1 || number >= endOfIds || std::to_string(number) != id)
        throw Refusal(400, "an id in the project is a number above 0: " + id);
    const int version = publicVersion(world, publicId);
    const std::int64_t publicNumber = longNumber(publicId, "id");
    const auto taken =
        world.tables.text("SELECT CASE WHEN publicId IS NOT ?3 THEN 'other' WHEN removed THEN 'removed' ELSE 'same' END FROM "
                          "component WHERE projectId = ?1 AND id = ?2",
                          projectId, number, publicNumber);
    if (taken == "other")
        throw Refusal(409, "the project has another component with the id " + id);
    if (taken != "same")
        insertComponent(world, projectId, number, publicNumber, version, *publicEdition(world, publicNumber, version));
}

/// All or none. What the project has already stays as it is.
Answer takeComponents(const Call& call, World& world)
{
    const json::Body body(call.body);
    body.text("softwareVersion");
    const std::string ids = body.rawOr("publicComponentIdToProjectComponentIdMap", {});
    requireProject(world, call.place("projectId"));
    requireWriter(world, call.place("projectId"), call.caller.accountId);
    if (!json::isJsonObject(ids) || *world.tables.integer("SELECT COUNT(*) FROM json_each(?) WHERE type <> 'text'", ids) != 0)
        throw Refusal(400, "\"publicComponentIdToProjectComponentIdMap\" must be an object of texts");
    std::vector<std::pair<std::string, std::string>> rows;
    world.tables.each([&](SQLite::Statement& row) { rows.emplace_back(row.getColumn(0).getString(), row.getColumn(1).getString()); },
                      "SELECT key, value FROM json_each(?) ORDER BY id", ids);
    for (const auto& [publicId, id] : rows)
        takeComponent(world, call.place("projectId"), publicId, id);
    return bare(json::Object().text("code", "success").text("message", "OK").str());
}

// The catalogue

std::string familyTypesOf(const std::vector<FamilyTypeSeed>& seeds)
{
    std::vector<std::string> familyTypes;
    for (const FamilyTypeSeed& seed : seeds) {
        if (!json::isJsonObject(seed.parameters))
            throw Refusal(400, "the parameters of a family type must be a JSON object");
        familyTypes.push_back(json::Object().text("name", seed.name).raw("parameters", seed.parameters).str());
    }
    return arrayOf(familyTypes);
}

std::string publish(World& world, const Edition& edition, const std::string& id)
{
    const std::int64_t editionId = addEdition(world, edition, {});
    std::int64_t version = 1;
    if (id.empty())
        world.tables.run("INSERT INTO publicComponent (version) VALUES (1)");
    else
        version = publicVersion(world, id) + 1;
    const std::int64_t number = id.empty() ? world.tables.lastRowId() : longNumber(id, "id");
    world.tables.run("UPDATE publicComponent SET version = ? WHERE id = ?", version, number);
    world.tables.run("INSERT INTO publicComponentVersion (componentId, version, editionId) VALUES (?, ?, ?)", number, version, editionId);
    return std::to_string(number);
}

Answer addCategoryCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    addComponentCategory(world, {body.filledText("code"), body.filledText("name"), body.textOr("parentCode", {}),
                                 static_cast<int>(body.integerOr("major", 0))});
    return done();
}

Answer addPublicComponentCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    Edition edition;
    edition.name = body.filledText("name");
    edition.categoryCode = body.filledText("categoryCode");
    edition.familyTypes = body.rawOr("familyTypes", "[]");
    return idAnswer(publish(world, edition, body.textOr("id", {})));
}

Answer listPublicComponents(const Call&, World& world)
{
    return enveloped(world.tables.rows("SELECT CAST(public.id AS TEXT) AS id, public.version AS version, name, categoryCode FROM "
                                       "publicComponent AS public JOIN publicComponentVersion AS newest ON newest.componentId = public.id "
                                       "AND newest.version = public.version JOIN componentEdition ON componentEdition.id = editionId "
                                       "ORDER BY public.id"));
}

Answer addStandardComponentsCall(const Call&, World& world)
{
    addStandardComponents(world);
    return done();
}

} // namespace

void addComponentCategory(World& world, const ComponentCategorySeed& category)
{
    if (category.code.empty() || category.name.empty())
        throw Refusal(400, "a category needs a code and a name");
    if (!category.parentCode.empty())
        requireCategory(world, category.parentCode);
    if (world.tables.text("SELECT code FROM componentCategory WHERE code = ?", category.code))
        throw Refusal(409, "there is such a category already: " + category.code);
    world.tables.run("INSERT INTO componentCategory (code, parentCode, name, major, weight) SELECT ?1, ?2, ?3, ?4, COUNT(*) + 1 FROM "
                     "componentCategory WHERE parentCode = ?2",
                     category.code, category.parentCode, category.name, category.major);
}

std::string addPublicComponent(World& world, const PublicComponentSeed& component)
{
    Edition edition;
    edition.name = component.name;
    edition.categoryCode = component.categoryCode;
    edition.familyTypes = familyTypesOf(component.familyTypes);
    return publish(world, edition, component.id);
}

// To extend the catalogue, add rows: a category in front of what lies in it. Lengths are millimetres.
void addStandardComponents(World& world)
{
    static const std::vector<ComponentCategorySeed> categories = {
        {"01", "建筑 Architecture", "", 1},      {"0101", "门 Doors", "01", 1},           {"0102", "窗 Windows", "01", 1},
        {"02", "结构 Structure", "", 0},         {"0201", "柱 Columns", "02", 0},         {"0202", "梁 Beams", "02", 0},
        {"03", "机电 Building services", "", 2}, {"0301", "管件 Pipe fittings", "03", 2}, {"0302", "风口 Air terminals", "03", 2},
    };
    static const std::vector<PublicComponentSeed> components = {
        {"单扇平开门 Single door",
         "0101",
         {{"900 x 2100", R"({"width":900,"height":2100})"}, {"1000 x 2100", R"({"width":1000,"height":2100})"}}},
        {"双扇平开门 Double door", "0101", {{"1500 x 2100", R"({"width":1500,"height":2100})"}}},
        {"防火门 Fire door", "0101", {{"甲级 Class A", R"({"width":1000,"height":2100,"minutes":90})"}}},
        {"推拉窗 Sliding window", "0102", {{"1500 x 1500", R"({"width":1500,"height":1500})"}}},
        {"固定窗 Fixed window", "0102", {{"600 x 600", R"({"width":600,"height":600})"}}},
        {"矩形柱 Rectangular column",
         "0201",
         {{"400 x 400", R"({"width":400,"depth":400})"}, {"600 x 600", R"({"width":600,"depth":600})"}}},
        {"圆形柱 Round column", "0201", {{"D500", R"({"diameter":500})"}}},
        {"矩形梁 Rectangular beam", "0202", {{"250 x 500", R"({"width":250,"height":500})"}}},
        {"工字钢梁 I-beam", "0202", {{"H300", R"({"height":300,"flange":150})"}}},
        {"弯头 Elbow", "0301", {{"DN100", R"({"diameter":100,"angle":90})"}}},
        {"三通 Tee", "0301", {{"DN100", R"({"diameter":100})"}}},
        {"方形散流器 Square diffuser", "0302", {{"300 x 300", R"({"width":300,"depth":300})"}}},
    };
    if (*world.tables.integer("SELECT COUNT(*) FROM componentCategory") > 0)
        return;
    for (const ComponentCategorySeed& category : categories)
        addComponentCategory(world, category);
    for (const PublicComponentSeed& component : components)
        addPublicComponent(world, component);
}

void addComponentRoutes(Router& router)
{
    const std::string project = "/structural/project/{projectId}";
    const std::string component = project + "/suite/{suiteId}";
    router.add("POST", "/structural/project/suites/search", searchComponents);
    router.add("GET", project + "/suite/major/categories", categoryCodes);
    router.add("POST", project + "/suite/category", categoryTree);
    router.add("POST", project + "/renewable/suites/categories", renewableTree);
    router.add("POST", project + "/suites/check4update", searchRenewables);
    router.add("GET", project + "/components/changed", changedComponents);
    router.add("GET", project + "/subject/suite/{id}/exist", componentExists);
    router.add("POST", project + "/suite/local", takeComponents);
    router.add("POST", "/structural/v2/project/{projectId}/suite/upload", uploadComponent);
    router.add("PUT", component + "/upgrade", upgradeComponent);
    router.add("GET", component, deleteComponent); // a GET indeed
    router.add("GET", component + "/family_types", familyTypes);
    router.add("GET", component + "/placeholder", cutlines);
    router.add("GET", component + "/detail/xml", componentXml);
    router.add("GET", component + "/{version}/info", componentDetail);
    router.add("GET", component + "/{version}/family/info", familyType);
    router.add("GET", component + "/{version}", componentFile);
    router.add("GET", std::string(picturePaths) + "{editionId}/{side}", pictureOfEdition, Access::Signed);
    router.add("GET", std::string(familyPaths) + "{editionId}", fileOfEdition, Access::Signed);
    router.addControl("POST", "componentCategories", addCategoryCall);
    router.addControl("GET", "publicComponents", listPublicComponents);
    router.addControl("POST", "publicComponents", addPublicComponentCall);
    router.addControl("POST", "standardComponents", addStandardComponentsCall);
}

} // namespace orlo::platform
