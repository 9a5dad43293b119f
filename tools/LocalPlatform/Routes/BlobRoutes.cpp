#include "../Server/FileBody.h"
#include "../Store/BlobStore.h"
#include "../Store/Md5.h"
#include "../Store/Store.h"
#include "../Store/Transfers.h"
#include "Files.h"
#include "Routes.h"

#include <algorithm>

namespace orlo::platform {

namespace {

constexpr const char* byteStream = "application/octet-stream";

std::string toldSum(Sums sums, const OpenFile& file)
{
    if (sums == Sums::untold)
        return {};
    std::string sum = md5Of(file);
    if (sums == Sums::wrong)
        std::reverse(sum.begin(), sum.end());
    return toBase64(sum);
}

Answer readBlob(const Call& call, World& world)
{
    Answer answer{200, {}, byteStream, std::make_shared<FileBody>(world.blobs.open(call.place("id")), call.download)};
    answer.contentMd5 = toldSum(world.transfers.sums(), answer.file->file());
    return answer;
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
