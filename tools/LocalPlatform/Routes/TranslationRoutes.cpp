#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

/// Nothing is translated here: the wish is noted.
Answer newTranslation(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string datasetId = body.filledText("dataSetId");
    const int version = readNumber(std::to_string(body.integer("versionId")), "versionId");
    requireVersion(world, datasetId, version);
    world.tables.run("INSERT INTO translation (dataSetId, versionId, toType) VALUES (?, ?, ?)", datasetId, version,
                     body.filledText("toType"));
    return enveloped("null");
}

} // namespace

void addTranslationRoutes(Router& router)
{
    router.add("POST", "/v1/upload", newTranslation);
}

} // namespace orlo::platform
