#include "../Store/BlobStore.h"
#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Files.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

// Where a template that a project offers comes from.
constexpr const char* fromPublicLibrary = "From_Common";
constexpr const char* fromOwnLibrary = "From_Customize";

constexpr const char* templateFileType = "TEMPLATE_FILE";
constexpr std::array templateSpecialties = {"Unknown", "ZOK", "ZIM", "ZUTA", "ZEB"};

// Project templates

Answer newProjectTemplate(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string name = body.filledText("templateName");
    const std::string projectId = body.filledText("srcProjectId");
    requireProject(world, projectId);
    requireWriter(world, projectId, call.caller.accountId);
    const std::string id = newId();
    world.tables.run("INSERT INTO projectTemplate (id, templateName, srcProjectId, accountId, creationTime) VALUES (?, ?, ?, ?, ?)", id,
                     name, projectId, call.caller.accountId, world.clock.text());
    return idAnswer(id);
}

Answer deleteProjectTemplate(const Call& call, World& world)
{
    const std::string& id = call.place("templateId");
    const auto accountId = world.tables.text("SELECT accountId FROM projectTemplate WHERE id = ?", id);
    if (!accountId)
        throw Refusal(404, "no such project template: " + id);
    if (*accountId != call.caller.accountId)
        throw Refusal(403, "only its owner may delete a project template");
    world.tables.run("DELETE FROM projectTemplate WHERE id = ?", id);
    return enveloped("true");
}

Answer projectTemplatesOfUser(const Call& call, World& world)
{
    return enveloped(world.tables.rows("SELECT id, templateName, srcProjectId FROM projectTemplate WHERE accountId = ? ORDER BY rank",
                                       call.caller.accountId));
}

// The templates that a project offers

struct Plate
{
    SamplePlateSeed seed;
    std::string uri;
    std::int64_t size = 0;
    std::string appVersion;
};

bool hasPlate(World& world, const std::string& projectId, const std::string& name)
{
    return world.tables.text("SELECT id FROM samplePlate WHERE projectId = ? AND name = ?", projectId, name).has_value();
}

std::string insertPlate(World& world, const Plate& plate)
{
    const SamplePlateSeed& seed = plate.seed;
    if (seed.name.empty())
        throw Refusal(400, "a template needs a name");
    requireOneOf(templateSpecialties, seed.specialty, "specialty");
    if (hasPlate(world, seed.projectId, seed.name))
        throw Refusal(409, "the project has a template of that name: " + seed.name);
    std::string id = freeId(world, "samplePlate", seed.id);
    world.tables.run("INSERT INTO samplePlate (id, projectId, name, uri, samplePlateFrom, specialty, templateId, size, appVersion, "
                     "createTime) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     id, seed.projectId, seed.name, plate.uri, seed.templateId.empty() ? fromOwnLibrary : fromPublicLibrary, seed.specialty,
                     seed.templateId, plate.size, plate.appVersion, world.clock.text());
    return id;
}

Answer newPlate(const Call& call, World& world)
{
    const std::string& projectId = call.place("projectId");
    requireProject(world, projectId);
    requireWriter(world, projectId, call.caller.accountId);
    const json::Body body(call.body);
    Plate plate;
    plate.seed.projectId = projectId;
    plate.seed.name = body.filledText("name");
    plate.seed.specialty = body.text("specialty");
    plate.uri = body.filledText("uri");
    plate.size = body.integer("size");
    plate.appVersion = body.text("appVersion");
    if (!world.tables.integer("SELECT length FROM storedFile WHERE fileId = ? AND length IS NOT NULL", plate.uri))
        throw Refusal(400, "the file isn't in the document store: " + plate.uri);
    return idAnswer(insertPlate(world, plate));
}

Answer plateNameExists(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(hasPlate(world, call.place("projectId"), call.filledQuery("name")) ? "true" : "false");
}

Answer platesOfProject(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return enveloped(world.tables.rows("SELECT id, name, uri, samplePlateFrom, specialty, templateId, projectId, CAST(size AS TEXT) AS "
                                       "size, createTime, createTime AS updateTime FROM samplePlate WHERE projectId = ? ORDER BY rank",
                                       call.place("projectId")));
}

Answer sampleFilesOfDataset(const Call& call, World& world)
{
    const std::string& datasetId = call.place("datasetId");
    const std::string projectId = call.filledQuery("projectId");
    requireProject(world, projectId);
    if (!world.tables.text("SELECT id FROM dataset WHERE id = ? AND projectId = ?", datasetId, projectId))
        throw Refusal(404, "no such dataset in the project: " + datasetId);
    return enveloped(world.tables.rows("SELECT sampleFile.id AS id, templateId, samplePlateId, type, datasetId, projectId, "
                                       "samplePlateFrom, uri FROM sampleFile JOIN samplePlate ON samplePlate.id = samplePlateId "
                                       "WHERE datasetId = ? ORDER BY sampleFile.rank",
                                       datasetId));
}

// The public library

void requirePublicTemplate(World& world, const std::string& templateId)
{
    if (!world.tables.text("SELECT id FROM publicTemplate WHERE id = ?", templateId))
        throw Refusal(404, "no such template in the public library: " + templateId);
}

Answer templateResources(const Call& call, World& world)
{
    const std::string templateId = call.filledQuery("templateId");
    requireOneOf(std::array{templateFileType}, call.filledQuery("type"), "type of a template's resource");
    requirePublicTemplate(world, templateId);
    return enveloped(world.tables.rows("SELECT id, name, size, type FROM publicTemplateFile WHERE templateId = ? ORDER BY id", templateId));
}

Answer templateResourceAddress(const Call& call, World& world)
{
    const std::string resourceId = call.filledQuery("resourceId");
    const auto blob = world.tables.text("SELECT blobId FROM publicTemplateFile WHERE CAST(id AS TEXT) = ? AND templateId = ?", resourceId,
                                        call.filledQuery("templateId"));
    if (!blob)
        throw Refusal(404, "the template has no such resource: " + resourceId);
    return enveloped(json::quote(signedAddress(world, "GET", *blob)));
}

// Control calls

Answer addTemplateCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    PublicTemplateSeed seed;
    seed.name = body.filledText("name");
    seed.bytes = body.textOr("text", {});
    seed.specialty = body.textOr("specialty", seed.specialty);
    seed.id = body.textOr("id", {});
    return idAnswer(addPublicTemplate(world, seed));
}

Answer addPlateCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    SamplePlateSeed seed;
    seed.projectId = body.filledText("projectId");
    seed.name = body.filledText("name");
    seed.templateId = body.textOr("templateId", {});
    seed.bytes = body.textOr("text", {});
    seed.specialty = body.textOr("specialty", seed.specialty);
    seed.id = body.textOr("id", {});
    return idAnswer(addSamplePlate(world, seed));
}

Answer addSampleCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    SampleFileSeed seed;
    seed.datasetId = body.filledText("datasetId");
    seed.samplePlateId = body.filledText("samplePlateId");
    seed.type = body.textOr("type", seed.type);
    seed.id = body.textOr("id", {});
    return idAnswer(addSampleFile(world, seed));
}

} // namespace

void addStandardTemplates(World& world)
{
    // One for each specialty. To add one: a name, what the file says, the specialty, and an id that stays.
    const std::vector<PublicTemplateSeed> library = {
        {"结构平面样板", "sheet A1; scale 1:100; unit mm; layers axis, beam, column, slab, wall\n", "ZOK", "standard-zok"},
        {"机电平面样板", "sheet A1; scale 1:100; unit mm; layers axis, duct, pipe, tray\n", "ZIM", "standard-zim"},
        {"建筑平面样板", "sheet A1; scale 1:100; unit mm; layers axis, door, room, wall, window\n", "ZUTA", "standard-zuta"},
        {"总图样板", "sheet A0; scale 1:500; unit m; layers boundary, contour, green, road\n", "ZEB", "standard-zeb"},
    };
    for (const PublicTemplateSeed& seed : library) {
        if (!world.tables.text("SELECT id FROM publicTemplate WHERE id = ?", seed.id))
            addPublicTemplate(world, seed);
    }
}

std::string addPublicTemplate(World& world, const PublicTemplateSeed& seed)
{
    if (seed.name.empty())
        throw Refusal(400, "a template needs a name");
    requireOneOf(templateSpecialties, seed.specialty, "specialty");
    std::string id = freeId(world, "publicTemplate", seed.id);
    world.tables.run("INSERT INTO publicTemplate (id, name, specialty) VALUES (?, ?, ?)", id, seed.name, seed.specialty);
    addPublicTemplateFile(world, id, seed.name, seed.bytes);
    return id;
}

std::string addPublicTemplateFile(World& world, const std::string& templateId, const std::string& name, const std::string& bytes)
{
    requirePublicTemplate(world, templateId);
    const std::string blobId = newId();
    world.blobs.put(blobId, bytes);
    world.tables.run("INSERT INTO publicTemplateFile (templateId, name, type, size, blobId) VALUES (?, ?, ?, ?, ?)", templateId, name,
                     templateFileType, static_cast<std::int64_t>(bytes.size()), blobId);
    return "/blobs/" + blobId;
}

std::string addSamplePlate(World& world, const SamplePlateSeed& seed)
{
    requireProject(world, seed.projectId);
    Plate plate;
    plate.seed = seed;
    plate.size = static_cast<std::int64_t>(seed.bytes.size());
    if (!seed.templateId.empty()) {
        requirePublicTemplate(world, seed.templateId);
        plate.size = *world.tables.integer("SELECT SUM(size) FROM publicTemplateFile WHERE templateId = ?", seed.templateId);
    }
    else {
        const std::string blobId = grantUpload(world, {seed.name, "templates", {}, true});
        const auto staged = world.blobs.stage();
        staged->append(seed.bytes);
        storeUpload(world, blobId, *staged);
        plate.uri = *world.tables.text("SELECT fileId FROM storedFile WHERE blobId = ?", blobId);
    }
    return insertPlate(world, plate);
}

std::string addSampleFile(World& world, const SampleFileSeed& seed)
{
    requireDataset(world, seed.datasetId);
    if (!world.tables.text("SELECT samplePlate.id FROM samplePlate JOIN dataset ON dataset.projectId = samplePlate.projectId "
                           "WHERE samplePlate.id = ? AND dataset.id = ?",
                           seed.samplePlateId, seed.datasetId))
        throw Refusal(404, "the dataset's project offers no such template: " + seed.samplePlateId);
    std::string id = freeId(world, "sampleFile", seed.id);
    world.tables.run("INSERT INTO sampleFile (id, datasetId, samplePlateId, type) VALUES (?, ?, ?, ?)", id, seed.datasetId,
                     seed.samplePlateId, seed.type);
    return id;
}

void addTemplateRoutes(Router& router)
{
    router.add("POST", "/project_templates", newProjectTemplate);
    router.add("DELETE", "/project_templates/{templateId}", deleteProjectTemplate);
    router.add("GET", "/project_templates", projectTemplatesOfUser);
    router.add("POST", "/customize/project/{projectId}/sample/plate", newPlate);
    router.add("GET", "/customize/project/{projectId}/sample/plate/name/exist", plateNameExists);
    router.add("GET", "/customize/project/{projectId}/sample/plates", platesOfProject);
    router.add("GET", "/structural/dataset/{datasetId}/sample/file/list", sampleFilesOfDataset);
    router.add("GET", "/structural/common/template/resources", templateResources);
    router.add("GET", "/structural/common/template/resources/url", templateResourceAddress);
    router.addControl("POST", "templates", addTemplateCall);
    router.addControl("POST", "plates", addPlateCall);
    router.addControl("POST", "samples", addSampleCall);
}

} // namespace orlo::platform
