#include "Files.h"

#include "../Server/FileBody.h"
#include "../Store/BlobStore.h"
#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Signing.h"
#include "../Store/Store.h"
#include "../Store/Transfers.h"
#include "Datasets.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

std::string pathOfBlob(const std::string& blobId)
{
    return "/blobs/" + blobId;
}

std::string insertFile(World& world, const std::string& remotePath, const std::string& fileName)
{
    std::string blobId = newId();
    world.tables.run("INSERT INTO storedFile (blobId, remotePath, fileName, creationTime) VALUES (?, ?, ?, ?)", blobId, remotePath,
                     fileName, world.clock.text());
    return blobId;
}

std::string required(const std::optional<std::string>& blobId, const std::string& name)
{
    if (!blobId)
        throw Refusal(404, "no such file: " + name);
    return *blobId;
}

/// A name that the folder has already is a further version of that file.
void numberVersion(World& world, const std::string& blobId)
{
    const auto known = world.tables.text("SELECT other.fileId FROM storedFile AS other JOIN storedFile AS mine ON "
                                         "mine.folderId = other.folderId AND mine.fileName = other.fileName "
                                         "WHERE mine.blobId = ? AND other.fileId IS NOT NULL LIMIT 1",
                                         blobId);
    world.tables.run("UPDATE storedFile SET fileId = ?1, versionIndex = "
                     "(SELECT COALESCE(MAX(versionIndex), 0) + 1 FROM storedFile WHERE fileId = ?1) "
                     "WHERE blobId = ?2 AND folderId IS NOT NULL AND fileId IS NULL",
                     known.value_or(newId()), blobId);
}

void removeBlobs(World& world, const std::vector<std::string>& blobIds)
{
    for (const std::string& blobId : blobIds)
        world.blobs.remove(blobId);
}

/// Files of the project's own library, which lie in none of its folders, unless another project offers them too.
void removeLibraryOfProject(World& world, const std::string& projectId)
{
    const std::string isOwn = "folderId IS NULL AND fileId IN (SELECT uri FROM samplePlate WHERE projectId = ?1) AND fileId NOT IN "
                              "(SELECT uri FROM samplePlate WHERE projectId <> ?1)";
    removeBlobs(world, world.tables.texts("SELECT blobId FROM storedFile WHERE " + isOwn, projectId));
    world.tables.run("DELETE FROM storedFile WHERE " + isOwn, projectId);
}

void removeModuleFilesOfProject(World& world, const std::string& projectId)
{
    const std::string isOfModules =
        "blobId IN (SELECT blobId FROM moduleFile JOIN moduleShelf ON moduleShelf.id = shelfId WHERE projectId = ?1)";
    removeBlobs(world, world.tables.texts("SELECT blobId FROM storedFile WHERE " + isOfModules, projectId));
    world.tables.run("DELETE FROM storedFile WHERE " + isOfModules, projectId);
}

std::unique_ptr<StagedBlob> staged(const World& world, const std::string& bytes)
{
    auto blob = world.blobs.stage();
    blob->append(bytes);
    return blob;
}

Answer listFiles(const Call&, World& world)
{
    return enveloped(world.tables.rows("SELECT remotePath, fileName, fileId, versionIndex, length FROM storedFile "
                                       "WHERE length IS NOT NULL ORDER BY rank"));
}

Answer fileContent(const Call& call, World& world)
{
    OpenFile file = world.blobs.open(blobOfPath(world, call.filledQuery("path")));
    return {200, {}, "application/octet-stream", std::make_shared<FileBody>(std::move(file), nullptr)};
}

Answer addFileCall(const Call& call, World& world)
{
    storeFile(world, call.filledQuery("path"), call.uploaded());
    return done();
}

Answer addDatasetFileCall(const Call& call, World& world)
{
    const std::string path = storeDatasetFile(world, call.place("datasetId"), call.filledQuery("path"), call.uploaded());
    return enveloped(json::Object().text("path", path).str());
}

} // namespace

std::string grantUpload(World& world, const Grant& grant)
{
    if (grant.fileName.find('/') != std::string::npos)
        throw Refusal(400, "a file's name has no slash: " + grant.fileName);
    // The id in between keeps uploads of one name apart.
    std::string blobId = insertFile(world, grant.filePath + "/" + newId() + "/" + grant.fileName, grant.fileName);
    if (!grant.folderId.empty())
        world.tables.run("UPDATE storedFile SET folderId = ? WHERE blobId = ?", grant.folderId, blobId);
    if (grant.isOfLibrary)
        world.tables.run("UPDATE storedFile SET fileId = ?, versionIndex = 1 WHERE blobId = ?", newId(), blobId);
    return blobId;
}

void storeUpload(World& world, const std::string& blobId, StagedBlob& staged)
{
    if (world.tables.run("UPDATE storedFile SET length = ? WHERE blobId = ?", staged.length(), blobId) == 0)
        throw Refusal(404, "no such upload");
    numberVersion(world, blobId);
    world.blobs.keep(staged, blobId);
}

std::string signedAddress(const World& world, const std::string& method, const std::string& blobId)
{
    const std::string path = pathOfBlob(blobId);
    return world.url + path + "?" + world.signer.query(method, path, world.clock.seconds() + world.transfers.signedLifetime());
}

std::string blobOfPath(const World& world, const std::string& remotePath)
{
    return required(world.tables.text("SELECT blobId FROM storedFile WHERE remotePath = ? AND length IS NOT NULL", remotePath), remotePath);
}

std::string blobOfFile(World& world, const std::string& fileId, int versionIndex)
{
    return required(world.tables.text("SELECT blobId FROM storedFile WHERE fileId = ? AND versionIndex = ? AND length IS NOT NULL", fileId,
                                      versionIndex),
                    fileId + ", version " + std::to_string(versionIndex));
}

std::string blobOfSeed(World& world, const std::string& datasetId, const std::string& seed)
{
    return required(world.tables.text("SELECT blobId FROM datasetFile WHERE datasetId = ? AND path = ?", datasetId, seed), seed);
}

std::optional<std::int64_t> lengthOfPath(World& world, const std::string& remotePath)
{
    return world.tables.integer("SELECT length FROM storedFile WHERE remotePath = ?", remotePath);
}

std::optional<std::int64_t> lengthOfFile(World& world, const std::string& fileId, std::int64_t versionIndex)
{
    return world.tables.integer("SELECT length FROM storedFile WHERE fileId = ? AND versionIndex = ?", fileId, versionIndex);
}

std::string remotePathOf(World& world, const std::string& blobId)
{
    return *world.tables.text("SELECT remotePath FROM storedFile WHERE blobId = ?", blobId);
}

std::vector<StoredFile> storedFiles(const World& world)
{
    std::vector<StoredFile> files;
    const auto take = [&](SQLite::Statement& row) {
        files.push_back({row.getColumn(0).getString(), row.getColumn(1).getString(), row.getColumn(2).getString(),
                         row.getColumn(3).getInt(), row.getColumn(4).getInt64()});
    };
    world.tables.each(take, "SELECT remotePath, fileName, COALESCE(fileId, ''), COALESCE(versionIndex, 0), length FROM storedFile "
                            "WHERE length IS NOT NULL ORDER BY rank");
    return files;
}

std::string contentOf(const World& world, const std::string& remotePath)
{
    return world.blobs.get(blobOfPath(world, remotePath));
}

void storeFile(World& world, const std::string& remotePath, StagedBlob& staged)
{
    if (remotePath.empty())
        throw Refusal(400, "a stored file needs a path");
    auto blobId = world.tables.text("SELECT blobId FROM storedFile WHERE remotePath = ?", remotePath);
    if (!blobId)
        blobId = insertFile(world, remotePath, remotePath.substr(remotePath.rfind('/') + 1));
    storeUpload(world, *blobId, staged);
}

std::string storeDatasetFile(World& world, const std::string& datasetId, const std::string& path, StagedBlob& staged)
{
    requireDataset(world, datasetId);
    if (path.empty())
        throw Refusal(400, "a dataset's file needs a path");
    world.tables.run("INSERT OR IGNORE INTO datasetFile (datasetId, path, blobId) VALUES (?, ?, ?)", datasetId, path, newId());
    const std::string blobId = blobOfSeed(world, datasetId, path);
    world.blobs.keep(staged, blobId);
    return pathOfBlob(blobId);
}

void addFile(World& world, const std::string& remotePath, const std::string& bytes)
{
    storeFile(world, remotePath, *staged(world, bytes));
}

std::string addDatasetFile(World& world, const std::string& datasetId, const std::string& path, const std::string& bytes)
{
    return storeDatasetFile(world, datasetId, path, *staged(world, bytes));
}

void removeFile(World& world, const std::string& projectId, const std::string& fileId)
{
    const auto blobIds = world.tables.texts("SELECT blobId FROM storedFile JOIN folder ON folder.id = storedFile.folderId "
                                            "WHERE fileId = ? AND projectId = ?",
                                            fileId, projectId);
    if (blobIds.empty())
        throw Refusal(404, "no such file in the project: " + fileId);
    removeBlobs(world, blobIds);
    world.tables.run("DELETE FROM storedFile WHERE fileId = ?", fileId);
}

void removeBlobsOfProject(World& world, const std::string& projectId)
{
    removeModuleFilesOfProject(world, projectId);
    removeLibraryOfProject(world, projectId);
    removeBlobs(world,
                world.tables.texts("SELECT blobId FROM font WHERE projectId = ?1 UNION ALL "
                                   "SELECT blobId FROM storedFile JOIN folder ON folder.id = folderId WHERE projectId = ?1 UNION ALL "
                                   "SELECT blobId FROM datasetFile JOIN dataset ON dataset.id = datasetId WHERE projectId = ?1",
                                   projectId));
}

void addFileControls(Router& router)
{
    router.addControl("GET", "files", listFiles);
    router.addControl("PUT", "files", addFileCall);
    router.addControl("GET", "files/content", fileContent);
    router.addControl("PUT", "datasets/{datasetId}/files", addDatasetFileCall);
}

} // namespace orlo::platform
