#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Files.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

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
    return fontAck(json::Object().text("fileUrlWithSAS", signedAddress(world, "GET", *blob)).str());
}

} // namespace

void addFontRoutes(Router& router)
{
    router.add("GET", "/style-family/font/project/list/{projectId}", fontsOfProject);
    router.add("GET", "/style-family/font/project/download/uri", fontAddress);
}

} // namespace orlo::platform
