#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Folders.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

Answer datasetsByModelingId(const Call& call, World& world)
{
    const std::string ids = json::array(json::readTextArray(call.body));
    return enveloped(world.tables.rows(selectDatasets + "WHERE modelingDatasetId IN (SELECT value FROM json_each(?)) ORDER BY rank", ids));
}

Answer datasetsOfFolder(const Call& call, World& world)
{
    const std::string folderId = call.filledQuery("folderId");
    requireFolder(world, folderId);
    return bare(world.tables.rows(selectDatasets + "WHERE folderId = ? ORDER BY rank", folderId));
}

Answer oneDataset(const Call& call, World& world)
{
    requireDataset(world, call.place("dataSetId"));
    return enveloped(*world.tables.row(selectDatasets + "WHERE id = ?", call.place("dataSetId")));
}

Answer newDataset(const Call& call, World& world)
{
    const json::Body body(call.body);
    DatasetSeed dataset;
    dataset.id = body.textOr("id", {});
    dataset.name = body.filledText("name");
    dataset.ownerId = body.textOr("ownerId", {});
    dataset.specialtyId = body.textOr("specialtyId", {});
    dataset.folderId = body.textOr("folderId", {});
    dataset.teamId = body.textOr("teamId", {});
    dataset.type = body.textOr("type", {});
    if (dataset.ownerId.empty())
        dataset.ownerId = call.caller.accountId;
    return enveloped(*world.tables.row(selectDatasets + "WHERE id = ?", addDataset(world, dataset)));
}

Answer datasetsByStatus(const Call& call, World& world)
{
    const std::string status = call.filledQuery("status");
    if (status != "draft" && status != "committed")
        throw Refusal(400, "unknown dataset status: " + status);
    requireProject(world, call.place("projectId"));
    return bare(world.tables.rows(selectDatasets + "WHERE projectId = ? AND status = ? ORDER BY rank", call.place("projectId"), status));
}

} // namespace

void addDatasetRoutes(Router& router)
{
    router.add("POST", "/dataset/modelingid", datasetsByModelingId);
    router.add("GET", "/dataset/byfolder", datasetsOfFolder);
    router.add("GET", "/v2/dataSets/{dataSetId}", oneDataset);
    router.add("POST", "/v2/dataSets", newDataset);
    router.add("GET", "/projects/{projectId}/dataSets/byStatus", datasetsByStatus);
}

} // namespace orlo::platform
