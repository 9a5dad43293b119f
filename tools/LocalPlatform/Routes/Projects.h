#pragma once

#include "../LocalPlatform.h"
#include "../Server/Router.h"

#include <string>

namespace orlo::platform {

struct NewProject
{
    ProjectSeed seed;
    std::string templateId;
    bool sample = false;
};

/// Makes the project with its root folder, the default folders below it and a team with its folder; returns the id.
std::string createProject(World& world, const NewProject& project);
/// Refused with 409 if the account's quota allows no further project.
void requireRoomForProject(World& world, const std::string& accountId);

/// Each refuses with 404 what isn't there.
void requireProject(World& world, const std::string& projectId);
void requireFolder(World& world, const std::string& folderId);
void requireTeamOfProject(World& world, const std::string& teamId, const std::string& projectId);
std::string projectOfFolder(World& world, const std::string& folderId);

/// Refused with 403 unless the account owns the project or may write something in it.
void requireWriter(World& world, const std::string& projectId, const std::string& accountId);

std::string createFolder(World& world, const FolderSeed& folder);
std::string createSpecialty(World& world, const std::string& projectId, const std::string& type, const std::string& name,
                            const std::string& id = {});

void setQuota(World& world, const std::string& accountId, int projectNumber, int spaceSize);
void setPersonal(World& world, const std::string& accountId);
void grantPermission(World& world, const std::string& projectId, const std::string& accountId, const std::string& resource,
                     const std::vector<std::string>& permissionTypes);
void setStandardProperties(World& world, const std::string& projectId, const std::string& jsonArray);
void setGridType(World& world, const std::string& projectId, const std::string& gridType);
void setProjectSize(World& world, const std::string& projectId, std::int64_t size);
void setArchived(World& world, const std::string& projectId, bool archived);

/// The id itself, a new one if it is empty; 409 if the table has a row with it already.
std::string freeId(World& world, const std::string& table, const std::string& id);

} // namespace orlo::platform
