#include "PermissionPlatform.h"

#include <LocalPlatform/Store/Store.h>
#include <LocalPlatform/World.h>

namespace orlo::test {

PermissionPlatform::PermissionPlatform()
{
    for (const char* user : {"wang", "zhang"})
        platform.change(platform::addUser, {user, "account-1", "token-of-" + std::string(user)});
    platform.change(platform::addProject, {"Tower", "account-1", "p-1"});
    platform.start();
    addDataset("d-1");
}

std::string PermissionPlatform::addDataset(const std::string& id)
{
    platform::DatasetSeed dataset;
    dataset.name = id;
    dataset.id = id;
    dataset.teamId = platform.ask(
        [](const platform::World& world) { return world.tables.text("SELECT id FROM team WHERE projectId = ?", "p-1").value(); });
    return platform.change(platform::addDataset, dataset);
}

void PermissionPlatform::allow(const std::vector<std::string>& types)
{
    platform.change(platform::grantPermission, "p-1", "account-1", "d-1", types);
}

PermissionProcess::PermissionProcess(const PermissionPlatform& platform, const TempFolder& root, const std::string& user)
    : ChildProcess({PERMISSION_HOST, platform.platform.url(), root.path().u8string(), user})
{}

} // namespace orlo::test
