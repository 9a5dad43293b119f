#include "../Server/FileBody.h"
#include "../Store/BlobStore.h"
#include "../Store/Store.h"
#include "../Store/Transfers.h"
#include "Files.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

constexpr const char* byteStream = "application/octet-stream";

Answer readBlob(const Call& call, World& world)
{
    return {200, {}, byteStream, std::make_shared<FileBody>(world.blobs.open(call.place("id")), call.download)};
}

Answer writeBlob(const Call& call, World& world)
{
    const std::string& blobId = call.place("id");
    storeUpload(world, blobId, call.uploaded());
    const auto version =
        world.tables.row("SELECT fileId, versionIndex, length FROM storedFile WHERE blobId = ? AND fileId IS NOT NULL", blobId);
    return version ? enveloped(*version) : bare(world.transfers.plainPutAnswer());
}

} // namespace

void addBlobRoutes(Router& router)
{
    router.add("GET", "/blobs/{id}", readBlob, Access::Signed);
    router.add("PUT", "/blobs/{id}", writeBlob, Access::Signed);
}

} // namespace orlo::platform
