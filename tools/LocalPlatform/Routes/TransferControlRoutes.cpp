#include "../Server/FileBody.h"
#include "../Store/BlobStore.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "../Store/Transfers.h"
#include "Files.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

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
    seedFile(world, call.filledQuery("path"), call.uploaded());
    return enveloped("null");
}

Answer addDatasetFileCall(const Call& call, World& world)
{
    const std::string path = seedDatasetFile(world, call.place("datasetId"), call.filledQuery("path"), call.uploaded());
    return enveloped(json::Object().text("path", path).str());
}

Answer listTranslations(const Call&, World& world)
{
    return enveloped(world.tables.rows("SELECT dataSetId, versionId, toType FROM translation ORDER BY rank"));
}

Answer transferState(const Call&, World& world)
{
    const Transfers& transfers = world.transfers;
    return enveloped(json::Object()
                         .number("signedLifetime", transfers.signedLifetime())
                         .flag("gzipAnswers", transfers.gzipAnswers())
                         .text("plainPutAnswer", transfers.plainPutAnswer())
                         .number("openDownloads", static_cast<std::int64_t>(transfers.openDownloads()))
                         .number("peakDownloads", static_cast<std::int64_t>(transfers.peakDownloads()))
                         .str());
}

Answer changeTransfers(const Call& call, World& world)
{
    const json::Body body(call.body);
    Transfers& transfers = world.transfers;
    transfers.setSignedLifetime(body.integerOr("signedLifetime", transfers.signedLifetime()));
    transfers.setGzipAnswers(body.flagOr("gzipAnswers", transfers.gzipAnswers()));
    transfers.setPlainPutAnswer(body.textOr("plainPutAnswer", transfers.plainPutAnswer()));
    return transferState(call, world);
}

} // namespace

void addTransferControlRoutes(Router& router)
{
    const auto add = [&router](const char* method, const std::string& name, Handler handler) {
        router.add(method, "/_control/" + name, std::move(handler), Access::Control);
    };
    add("GET", "files", listFiles);
    add("PUT", "files", addFileCall);
    add("GET", "files/content", fileContent);
    add("PUT", "datasets/{datasetId}/files", addDatasetFileCall);
    add("GET", "translations", listTranslations);
    add("GET", "transfers", transferState);
    add("PATCH", "transfers", changeTransfers);
}

} // namespace orlo::platform
