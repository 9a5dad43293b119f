#include "BlobStore.h"
#include "Clock.h"
#include "Json.h"
#include "Projects.h"
#include "Routes.h"
#include "Signing.h"
#include "Store.h"

namespace orlo::platform {

namespace {

constexpr std::int64_t kAddressLifeSeconds = 900;

/// The font service says "msg" where the others say "message".
Answer fontAck(const std::string& data)
{
    return bare(json::Object().number("code", 10000).text("msg", "OK").raw("data", data).str());
}

Answer fontsOfProject(const Call& call, World& world)
{
    requireProject(world, call.place("projectId"));
    return fontAck(world.tables.rows("SELECT id, name, projectId, fileType, fontFrom, createTime, uploader, resourceBytes FROM font "
                                     "WHERE projectId = ? ORDER BY rank",
                                     call.place("projectId")));
}

Answer fontAddress(const Call& call, World& world)
{
    const std::string fontId = call.filledQuery("fontId");
    const auto blob = world.tables.text("SELECT blobId FROM font WHERE id = ? AND projectId = ?", fontId, call.filledQuery("projectId"));
    if (!blob)
        throw Refusal(404, "no such font in the project: " + fontId);
    const std::string path = "/blobs/" + *blob;
    const std::string address = world.url + path + "?" + world.signer.query("GET", path, world.clock.seconds() + kAddressLifeSeconds);
    return fontAck(json::Object().text("fileUrlWithSAS", address).str());
}

Answer blob(const Call& call, World& world)
{
    world.signer.check("GET", call.target.path(), call.query("expires"), call.query("signature"), world.clock.seconds());
    return Answer{200, world.blobs.get(call.place("id")), "application/octet-stream"};
}

} // namespace

void addFontRoutes(Router& router)
{
    router.add("GET", "/style-family/font/project/list/{projectId}", fontsOfProject);
    router.add("GET", "/style-family/font/project/download/uri", fontAddress);
    router.add("GET", "/blobs/{id}", blob, Access::Signed);
}

} // namespace orlo::platform
