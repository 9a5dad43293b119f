#include "../Store/BlobStore.h"
#include "../Store/Clock.h"
#include "../Store/Ids.h"
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

Answer addFontCall(const Call& call, World& world)
{
    const json::Body body(call.body);
    FontSeed font;
    font.projectId = body.filledText("projectId");
    font.name = body.filledText("name");
    font.bytes = body.textOr("text", {});
    font.fileType = body.textOr("fileType", font.fileType);
    font.fontFrom = body.textOr("fontFrom", font.fontFrom);
    font.uploader = body.textOr("uploader", {});
    font.id = body.textOr("id", {});
    return idAnswer(addFont(world, font));
}

} // namespace

std::string addFont(World& world, const FontSeed& font)
{
    if (font.name.empty())
        throw Refusal(400, "a font needs a name");
    requireProject(world, font.projectId);
    std::string id = freeId(world, "font", font.id);
    const std::string blobId = newId();
    world.blobs.put(blobId, font.bytes);
    world.tables.run("INSERT INTO font (id, projectId, name, fileType, fontFrom, createTime, uploader, resourceBytes, blobId) "
                     "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)",
                     id, font.projectId, font.name, font.fileType, font.fontFrom, world.clock.text(), font.uploader,
                     std::to_string(font.bytes.size()), blobId);
    return id;
}

void addFontRoutes(Router& router)
{
    router.add("GET", "/style-family/font/project/list/{projectId}", fontsOfProject);
    router.add("GET", "/style-family/font/project/download/uri", fontAddress);
    router.addControl("POST", "fonts", addFontCall);
}

} // namespace orlo::platform
