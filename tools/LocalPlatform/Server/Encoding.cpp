#include "Encoding.h"

#include "../Store/BlobStore.h"
#include "Answer.h"
#include "Gzip.h"
#include "RequestBody.h"

namespace orlo::platform {

namespace {

void receiveAll(RequestBody& body, const Sink& sink)
{
    for (std::string_view piece = body.next(); !piece.empty(); piece = body.next())
        sink(piece);
}

} // namespace

std::unique_ptr<StagedBlob> receive(RequestBody& body, const std::string& encoding, const BlobStore& blobs)
{
    std::unique_ptr<StagedBlob> staged = blobs.stage();
    const Sink write = [&](std::string_view piece) { staged->append(piece); };
    if (encoding == "gzip") {
        GzipReader reader(write);
        receiveAll(body, [&](std::string_view piece) { reader.feed(piece); });
        reader.finish();
    }
    else if (encoding.empty() || encoding == "identity")
        receiveAll(body, write);
    else
        throw Refusal(415, "unknown Content-Encoding: " + encoding);
    return staged;
}

OpenFile packed(const OpenFile& file, const BlobStore& blobs)
{
    const std::unique_ptr<StagedBlob> staged = blobs.stage();
    GzipWriter writer([&](std::string_view piece) { staged->append(piece); });
    file.read([&](std::string_view piece) { writer.feed(piece); });
    writer.finish();
    return staged->open();
}

} // namespace orlo::platform
