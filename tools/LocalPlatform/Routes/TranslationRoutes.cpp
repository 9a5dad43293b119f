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
    return done();
}

Answer listTranslations(const Call&, World& world)
{
    return enveloped(world.tables.rows("SELECT dataSetId, versionId, toType FROM translation ORDER BY rank"));
}

} // namespace

std::vector<Translation> translations(const World& world)
{
    std::vector<Translation> all;
    const auto take = [&](SQLite::Statement& row) {
        all.push_back({row.getColumn(0).getString(), row.getColumn(1).getInt(), row.getColumn(2).getString()});
    };
    world.tables.each(take, "SELECT dataSetId, versionId, toType FROM translation ORDER BY rank");
    return all;
}

void addTranslationRoutes(Router& router)
{
    router.add("POST", "/v1/upload", newTranslation);
    router.addControl("GET", "translations", listTranslations);
}

} // namespace orlo::platform
