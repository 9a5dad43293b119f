#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

const std::string selectBindings = "SELECT drawingBinding.datasetId, dataset.name AS datasetName, datasetVersion, displayVersion "
                                   "FROM drawingBinding JOIN dataset ON dataset.id = drawingBinding.datasetId "
                                   "JOIN version ON version.dataSetId = drawingBinding.datasetId AND version.version = datasetVersion "
                                   "WHERE dwgId = ? AND dwgVersion = ? ORDER BY drawingBinding.rank ";

int versionNumber(const json::Body& body, const std::string& key)
{
    return readNumber(std::to_string(body.integer(key)), key);
}

Answer bindDrawing(const Call& call, World& world)
{
    const json::Body body(call.body);
    const std::string datasetId = body.filledText("datasetId");
    const int datasetVersion = versionNumber(body, "datasetVersion");
    requireVersion(world, datasetId, datasetVersion);
    world.tables.run("INSERT OR IGNORE INTO drawingBinding (dwgId, dwgVersion, datasetId, datasetVersion) VALUES (?, ?, ?, ?)",
                     body.filledText("dwgId"), versionNumber(body, "dwgVersion"), datasetId, datasetVersion);
    return done();
}

/// The dataset that a drawing was bound to first is its main one.
Answer bindingsOfDrawing(const Call& call, World& world)
{
    const std::string& dwgId = call.place("dwgId");
    const int dwgVersion = call.numberPlace("dwgVersion");
    const auto main = world.tables.row(selectBindings + "LIMIT 1", dwgId, dwgVersion);
    json::Object bindings;
    bindings.raw("linkedDatasets", world.tables.rows(selectBindings + "LIMIT -1 OFFSET 1", dwgId, dwgVersion));
    if (main)
        bindings.raw("mainDataset", *main);
    return enveloped(bindings.str());
}

} // namespace

void addDrawingRoutes(Router& router)
{
    router.add("POST", "/dataset/dwg/binding", bindDrawing);
    router.add("GET", "/dwg/{dwgId}/version/{dwgVersion}/bind-info", bindingsOfDrawing);
}

} // namespace orlo::platform
