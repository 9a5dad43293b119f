#include "../Store/BlobStore.h"
#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Md5.h"
#include "../Store/Store.h"
#include "Files.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

constexpr std::array spaceTypes = {"projects", "accounts"};

/// Modules of one resource type in one space.
struct ShelfPlace
{
    std::string spaceType;
    std::string space;
    std::string resourceType;
};

/// Returns the id of the row, which is made at its first use. Refused if there is no such space.
std::int64_t shelf(World& world, const ShelfPlace& place)
{
    requireOneOf(spaceTypes, place.spaceType, "type of a space");
    const bool isProject = place.spaceType == "projects";
    if (isProject)
        requireProject(world, place.space);
    world.tables.run("INSERT OR IGNORE INTO moduleShelf (spaceType, space, resourceType, projectId) VALUES (?1, ?2, ?3, "
                     "CASE WHEN ?4 THEN ?2 END)",
                     place.spaceType, place.space, place.resourceType, static_cast<int>(isProject));
    return *world.tables.integer("SELECT id FROM moduleShelf WHERE spaceType = ? AND space = ? AND resourceType = ?", place.spaceType,
                                 place.space, place.resourceType);
}

enum class Use { read, write };

/// The space of an account is its own; that of a project is for all to read and for its writers to change.
std::int64_t shelfOf(const Call& call, World& world, const std::string& resourceType, Use use)
{
    const ShelfPlace place{call.place("spaceType"), call.place("space"), resourceType};
    const std::int64_t id = shelf(world, place);
    if (place.spaceType == "accounts" && place.space != call.caller.accountId)
        throw Refusal(403, "the space is another account's");
    if (place.spaceType == "projects" && use == Use::write)
        requireWriter(world, place.space, call.caller.accountId);
    return id;
}

Answer moduleCategories(const Call& call, World& world)
{
    const std::int64_t shelfId = shelfOf(call, world, call.place("resourceType"), Use::read);
    return enveloped(world.tables.rows("SELECT id, parentId AS parent_id, name FROM moduleCategory WHERE shelfId = ? AND tree = ? "
                                       "ORDER BY rank",
                                       shelfId, call.place("tree")));
}

// Files

/// The answer of both signing calls.
Answer signedFile(World& world, const std::string& method, const std::string& blobId)
{
    const std::string file =
        json::Object().text("file_key", remotePathOf(world, blobId)).text("url_with_signature", signedAddress(world, method, blobId)).str();
    return enveloped("[" + file + "]");
}

Answer signModuleUpload(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::int64_t shelfId = shelfOf(call, world, call.place("resourceType"), Use::write);
    if (body.text("access_ctl") != "private_ctl")
        throw Refusal(400, "\"access_ctl\" must be \"private_ctl\"");
    const Grant grant{body.filledText("fileName"), "modules/" + call.place("spaceType") + "/" + call.place("space"), {}};
    const std::string md5 = body.filledText("md5");
    const std::string blobId = grantUpload(world, grant);
    world.tables.run("INSERT INTO moduleFile (blobId, shelfId, md5) VALUES (?, ?, ?)", blobId, shelfId, md5);
    return signedFile(world, "PUT", blobId);
}

/// A file that was signed for here; no value if there is none.
std::optional<std::string> blobOfModuleFile(World& world, std::int64_t shelfId, const std::string& fileKey)
{
    return world.tables.text("SELECT moduleFile.blobId FROM moduleFile JOIN storedFile ON storedFile.blobId = moduleFile.blobId "
                             "WHERE shelfId = ? AND remotePath = ?",
                             shelfId, fileKey);
}

bool hasArrived(World& world, const std::string& blobId)
{
    return world.tables.integer("SELECT length FROM storedFile WHERE blobId = ?", blobId).has_value();
}

Answer signModuleDownload(const Call& call, World& world)
{
    const std::string fileKey = json::Body(call.body).filledText("file_key");
    const auto blobId = blobOfModuleFile(world, shelfOf(call, world, call.place("resourceType"), Use::read), fileKey);
    if (!blobId || !hasArrived(world, *blobId))
        throw Refusal(404, "no such file of a module: " + fileKey);
    return signedFile(world, "GET", *blobId);
}

// Modules. What is wrong with one is told by a word, not by a status.

constexpr const char* nothingWrong = "none";

bool hasCategory(World& world, std::int64_t shelfId, const std::string& id)
{
    return world.tables.text("SELECT id FROM moduleCategory WHERE shelfId = ? AND id = ?", shelfId, id).has_value();
}

/// The module of that name in the category; no value if there is none.
std::optional<std::string> moduleOfName(World& world, std::int64_t shelfId, const std::string& categoryId, const std::string& name)
{
    return world.tables.text("SELECT id FROM module WHERE shelfId = ? AND categoryId = ? AND name = ?", shelfId, categoryId, name);
}

/// Whether a new module may have the name, or a known one the bytes.
std::string verdictOn(World& world, std::int64_t shelfId, const json::Body& candidate)
{
    const std::string categoryId = candidate.text("category_id");
    const std::string target = candidate.text("target_module_uid");
    if (!hasCategory(world, shelfId, categoryId))
        return "category_not_found";
    if (target.empty())
        return moduleOfName(world, shelfId, categoryId, candidate.filledText("name")) ? "name_exists" : nothingWrong;
    const auto newest = world.tables.text("SELECT md5 FROM module JOIN moduleVersion ON moduleId = id JOIN moduleFile USING (blobId) "
                                          "WHERE module.shelfId = ? AND id = ? ORDER BY version DESC LIMIT 1",
                                          shelfId, target);
    if (!newest)
        return "module_not_found";
    return *newest == candidate.filledText("md5") ? "file_unchanged" : nothingWrong;
}

Answer checkModule(const Call& call, World& world)
{
    const json::Body candidate(call.body);
    candidate.text("application_type");
    const std::int64_t shelfId = shelfOf(call, world, candidate.filledText("resource_type"), Use::write);
    return enveloped("[" + json::Object().text("error_code", verdictOn(world, shelfId, candidate)).str() + "]");
}

std::string receipt(const std::string& errorCode, const std::string& moduleId, std::int64_t version)
{
    return json::Object()
        .flag("success", errorCode == nothingWrong)
        .text("error_code", errorCode)
        .text("resource_id", moduleId)
        .number("resource_version", version)
        .str();
}

/// What is wrong with the file or the place of a new module.
std::string verdictOnFile(World& world, std::int64_t shelfId, const json::Body& module, const std::optional<std::string>& blobId)
{
    if (!hasCategory(world, shelfId, module.text("category_id")))
        return "category_not_found";
    if (!blobId)
        return "file_not_found";
    if (!hasArrived(world, *blobId))
        return "file_not_uploaded";
    const std::string md5 = module.filledText("md5");
    const bool isAsSigned = world.tables.text("SELECT blobId FROM moduleFile WHERE blobId = ? AND md5 = ?", *blobId, md5).has_value();
    return isAsSigned && toHex(md5Of(world.blobs.open(*blobId))) == md5 ? nothingWrong : "md5_mismatch";
}

std::string addModule(World& world, std::int64_t shelfId, const json::Body& module)
{
    const std::string name = module.filledText("name");
    const std::string categoryId = module.text("category_id");
    const std::string applicationType = module.text("application_type");
    module.filledText("url");
    const auto blobId = blobOfModuleFile(world, shelfId, module.filledText("file_key"));
    const std::string verdict = verdictOnFile(world, shelfId, module, blobId);
    if (verdict != nothingWrong)
        return receipt(verdict, {}, 0);
    // Told once more: the answer was lost.
    const auto known = world.tables.text("SELECT moduleId FROM moduleVersion WHERE blobId = ?", *blobId);
    if (!known) {
        const auto namesake = moduleOfName(world, shelfId, categoryId, name);
        if (namesake && !module.flagOr("enforce", false))
            return receipt("name_exists", *namesake, 0);
        const std::string id = namesake ? *namesake : newId();
        world.tables.run("INSERT OR IGNORE INTO module (id, shelfId, categoryId, name) VALUES (?, ?, ?, ?)", id, shelfId, categoryId, name);
        world.tables.run("INSERT INTO moduleVersion (moduleId, version, blobId, applicationType, creationTime) "
                         "SELECT ?1, COALESCE(MAX(version), 0) + 1, ?2, ?3, ?4 FROM moduleVersion WHERE moduleId = ?1",
                         id, *blobId, applicationType, world.clock.text());
    }
    const std::string id = *world.tables.text("SELECT moduleId FROM moduleVersion WHERE blobId = ?", *blobId);
    return receipt(nothingWrong, id, *world.tables.integer("SELECT version FROM moduleVersion WHERE blobId = ?", *blobId));
}

Answer addModules(const Call& call, World& world)
{
    const std::string files = json::Body(call.body).rawOr("vmd_files", "null");
    if (!json::isJsonArray(files))
        throw Refusal(400, "\"vmd_files\" must be an array");
    std::string receipts;
    for (const std::string& file : world.tables.texts("SELECT value FROM json_each(?)", files)) {
        const json::Body module(file);
        const std::int64_t shelfId = shelfOf(call, world, module.filledText("resource_type"), Use::write);
        if (module.text("access_ctl") != "private_ctl")
            throw Refusal(400, "\"access_ctl\" must be \"private_ctl\"");
        receipts += (receipts.empty() ? "" : ",") + addModule(world, shelfId, module);
    }
    return enveloped("[" + receipts + "]");
}

// Preparing and observing

Answer addCategoryCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    ModuleCategorySeed category;
    category.spaceType = body.filledText("spaceType");
    category.space = body.filledText("space");
    category.resourceType = body.filledText("resourceType");
    category.tree = body.filledText("tree");
    category.name = body.filledText("name");
    category.parentId = body.textOr("parentId", {});
    category.id = body.textOr("id", {});
    return idAnswer(addModuleCategory(world, category));
}

const std::string selectModules =
    "SELECT module.id AS id, version, categoryId, name, applicationType, remotePath AS fileKey, length FROM moduleVersion "
    "JOIN module ON module.id = moduleId JOIN storedFile USING (blobId) ORDER BY module.rank, version";

Answer listModules(const Call&, World& world)
{
    return enveloped(world.tables.rows(selectModules));
}

} // namespace

std::string addModuleCategory(World& world, const ModuleCategorySeed& category)
{
    const std::int64_t shelfId = shelf(world, {category.spaceType, category.space, category.resourceType});
    if (!category.parentId.empty() && !hasCategory(world, shelfId, category.parentId))
        throw Refusal(404, "no such category: " + category.parentId);
    std::string id = freeId(world, "moduleCategory", category.id);
    world.tables.run("INSERT INTO moduleCategory (id, shelfId, tree, parentId, name) VALUES (?, ?, ?, ?, ?)", id, shelfId, category.tree,
                     category.parentId, category.name);
    return id;
}

std::vector<StoredModule> storedModules(const World& world)
{
    std::vector<StoredModule> modules;
    const auto take = [&](SQLite::Statement& row) {
        modules.push_back({row.getColumn(0).getString(), row.getColumn(1).getInt(), row.getColumn(2).getString(),
                           row.getColumn(3).getString(), row.getColumn(4).getString(), row.getColumn(5).getString()});
    };
    world.tables.each(take, selectModules);
    return modules;
}

void addModuleRoutes(Router& router)
{
    const std::string types = "/{spaceType}/{space}/types/";
    router.add("GET", types + "{resourceType}/category_tree_types/{tree}/categories", moduleCategories);
    router.add("POST", types + "{resourceType}/files/sign_upload_url", signModuleUpload);
    router.add("POST", types + "{resourceType}/files/sign_download_url", signModuleDownload);
    router.add("POST", types + "module/vmd_file", checkModule);
    router.add("POST", types + "module/vmd_files", addModules);
    router.addControl("POST", "module-categories", addCategoryCall);
    router.addControl("GET", "modules", listModules);
}

} // namespace orlo::platform
