#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Datasets.h"
#include "Files.h"
#include "Folders.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

/// The right to read or write one file, and its place in the store.
std::string authority(World& world, const std::string& method, const std::string& blobId)
{
    return json::Object()
        .text("fileOSSPath", remotePathOf(world, blobId))
        .text("fileUrlWithSAS", signedAddress(world, method, blobId))
        .str();
}

Answer uploadAuthority(const Call& call, World& world)
{
    const Grant grant{call.filledQuery("fileName"), call.filledQuery("filepath"), {}};
    return bare(authority(world, "PUT", grantUpload(world, grant)));
}

Answer docUploadAuthority(const Call& call, World& world)
{
    if (call.target.query.count("targetFolderId") == 0)
        throw Refusal(400, "the query lacks \"targetFolderId\"");
    const std::string folderId = call.query("targetFolderId");
    if (!folderId.empty())
        requireFolder(world, folderId);
    const Grant grant{call.filledQuery("fileName"), call.filledQuery("filepath"), folderId, folderId.empty()};
    return enveloped(authority(world, "PUT", grantUpload(world, grant)));
}

Answer downloadAuthority(const Call& call, World& world)
{
    return bare(authority(world, "GET", blobOfPath(world, call.body)));
}

Answer docDownloadAuthority(const Call& call, World& world)
{
    const int version = readNumber(call.filledQuery("version"), "version");
    return enveloped(authority(world, "GET", blobOfFile(world, call.place("fileId"), version)));
}

std::string seedAuthority(World& world, const std::string& datasetId, const std::string& seed)
{
    return json::Object()
        .text("datasetFilePath", seed)
        .text("datasetFilePathWithSAS", signedAddress(world, "GET", blobOfSeed(world, datasetId, seed)))
        .str();
}

Answer seedAuthorities(const Call& call, World& world)
{
    const std::string& datasetId = call.place("datasetId");
    requireDataset(world, datasetId);
    std::string all;
    for (const std::string& seed : json::readTextArray(call.body))
        all += (all.empty() ? "" : ",") + seedAuthority(world, datasetId, seed);
    return enveloped("[" + all + "]");
}

Answer deleteFile(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    requireWriter(world, call.place("projectId"), call.caller.accountId);
    removeFile(world, call.place("projectId"), call.place("fileId"));
    return done();
}

} // namespace

void addFileRoutes(Router& router)
{
    router.add("PUT", "/file/new", uploadAuthority);
    router.add("GET", "/file/doc/upload/url/with/filename", docUploadAuthority);
    router.add("POST", "/file/read", downloadAuthority);
    router.add("POST", "/file/doc/{fileId}/download/url", docDownloadAuthority);
    router.add("POST", "/datasets/{datasetId}/blockFiles/readSAS", seedAuthorities);
    router.add("DELETE", "/projects/{projectId}/files/{fileId}", deleteFile);
}

} // namespace orlo::platform
