#include "Datasets.h"

#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Folders.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

/// Completes the home of a dataset: a team alone means its linked folder.
void findHome(World& world, DatasetSeed& dataset)
{
    if (dataset.teamId.empty() && dataset.folderId.empty())
        throw Refusal(400, "a dataset needs a team or a folder");
    if (!dataset.folderId.empty())
        return;
    const auto linked = world.tables.text("SELECT linkedFolderId FROM team WHERE id = ?", dataset.teamId);
    if (!linked)
        throw Refusal(404, "no such team: " + dataset.teamId);
    dataset.folderId = *linked;
}

void requireSpecialtyOfProject(World& world, const std::string& specialtyId, const std::string& projectId)
{
    if (!world.tables.text("SELECT id FROM specialty WHERE id = ? AND projectId = ?", specialtyId, projectId))
        throw Refusal(400, "no such specialty in the project: " + specialtyId);
}

void checkDataset(World& world, const DatasetSeed& dataset, const std::string& projectId)
{
    if (dataset.name.empty())
        throw Refusal(400, "a dataset needs a name");
    if (!dataset.teamId.empty())
        requireTeamOfProject(world, dataset.teamId, projectId);
    if (!dataset.specialtyId.empty())
        requireSpecialtyOfProject(world, dataset.specialtyId, projectId);
    if (world.tables.text("SELECT id FROM dataset WHERE modelingDatasetId = ?", dataset.modelingDatasetId))
        throw Refusal(409, "the modeling id is taken: " + dataset.modelingDatasetId);
}

Answer addDatasetCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    DatasetSeed dataset;
    dataset.name = body.filledText("name");
    dataset.folderId = body.textOr("folderId", {});
    dataset.teamId = body.textOr("teamId", {});
    dataset.type = body.textOr("type", dataset.type);
    dataset.specialtyId = body.textOr("specialtyId", {});
    dataset.ownerId = body.textOr("ownerId", {});
    dataset.description = body.textOr("description", {});
    dataset.id = body.textOr("id", {});
    dataset.modelingDatasetId = body.textOr("modelingDatasetId", {});
    return idAnswer(addDataset(world, dataset));
}

} // namespace

std::string addDataset(World& world, const DatasetSeed& seed)
{
    DatasetSeed dataset = seed;
    findHome(world, dataset);
    const std::string projectId = projectOfFolder(world, dataset.folderId);
    checkDataset(world, dataset, projectId);
    std::string id = freeId(world, "dataset", dataset.id);
    world.tables.run("INSERT INTO dataset (id, projectId, folderId, teamId, modelingDatasetId, name, nameSpace, schemaDefinition, type, "
                     "specialtyId, ownerId, description, creationTime) VALUES (?, ?, ?, ?, ?, ?, '', '', ?, ?, ?, ?, ?)",
                     id, projectId, dataset.folderId, dataset.teamId,
                     dataset.modelingDatasetId.empty() ? newId() : dataset.modelingDatasetId, dataset.name, dataset.type,
                     dataset.specialtyId, dataset.ownerId, dataset.description, world.clock.text());
    return id;
}

void requireDataset(World& world, const std::string& datasetId)
{
    if (!world.tables.text("SELECT id FROM dataset WHERE id = ?", datasetId))
        throw Refusal(404, "no such dataset: " + datasetId);
}

void requireVersion(World& world, const std::string& datasetId, int number)
{
    requireDataset(world, datasetId);
    if (!world.tables.integer("SELECT id FROM version WHERE dataSetId = ? AND version = ?", datasetId, number))
        throw Refusal(404, "the dataset has no version " + std::to_string(number));
}

void addDatasetControls(Router& router)
{
    router.addControl("POST", "datasets", addDatasetCall);
}

} // namespace orlo::platform
