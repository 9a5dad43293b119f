#include "../Store/Clock.h"
#include "../Store/Ids.h"
#include "../Store/Json.h"
#include "../Store/Store.h"
#include "Projects.h"
#include "Routes.h"

namespace orlo::platform {

namespace {

/// Which document a path names.
struct ConfigPlace
{
    std::string projectId;
    std::string type;
};

ConfigPlace readPlace(const Call& call, World& world)
{
    const std::string& type = call.place("configType");
    if (type != "SpaceConfig" && type != "GridConfig" && type != "SubItem" && type != "Coordinate")
        throw Refusal(400, "unknown config type: " + type);
    requireProject(world, call.place("scopeEntityId"));
    return {call.place("scopeEntityId"), type};
}

Answer oneConfig(const Call& call, World& world)
{
    const ConfigPlace place = readPlace(call, world);
    const int version = readNumber(call.filledQuery("version"), "version");
    const auto document = world.tables.row("SELECT id, projectId AS scopeEntityId, version, configValue FROM config "
                                           "WHERE projectId = ?1 AND configType = ?2 AND (version = ?3 OR ?3 = -1) "
                                           "ORDER BY version DESC LIMIT 1",
                                           place.projectId, place.type, version);
    if (!document)
        throw Refusal(404, "there is no such version of the configuration: " + std::to_string(version));
    return bare(*document);
}

Answer newConfig(const Call& call, World& world)
{
    const ConfigPlace place = readPlace(call, world);
    requireWriter(world, place.projectId, call.caller.accountId);
    if (!json::isJsonObject(call.body))
        throw Refusal(400, "the body must be a JSON object");
    const std::string id = newId();
    world.tables.run("INSERT INTO config (id, projectId, configType, version, configValue, author, creationTime) "
                     "SELECT ?1, ?2, ?3, COALESCE(MAX(version), 0) + 1, ?4, ?5, ?6 FROM config WHERE projectId = ?2 AND configType = ?3",
                     id, place.projectId, place.type, call.body, call.caller.accountId, world.clock.text());
    return bare(*world.tables.row("SELECT id, projectId AS scopeEntityId, version FROM config WHERE id = ?", id));
}

Answer configVersions(const Call& call, World& world)
{
    const ConfigPlace place = readPlace(call, world);
    return bare(*world.tables.text("SELECT json_group_array(version) FROM (SELECT version FROM config "
                                   "WHERE projectId = ? AND configType = ? ORDER BY version)",
                                   place.projectId, place.type));
}

} // namespace

void addConfigRoutes(Router& router)
{
    router.add("GET", "/config/scope/Project/{scopeEntityId}/type/{configType}", oneConfig);
    router.add("POST", "/config/scope/Project/{scopeEntityId}/type/{configType}", newConfig);
    router.add("GET", "/config/scope/Project/{scopeEntityId}/type/{configType}/versions", configVersions);
}

} // namespace orlo::platform
