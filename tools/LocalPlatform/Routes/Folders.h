#pragma once

#include "../Seeds.h"

#include <string>

namespace orlo::platform {

/// The root folder of a new project, the default folders below it, and a team with its folder.
void addDefaultFolders(World& world, const std::string& projectId, const std::string& projectName);

/// Each refuses with 404 what isn't there.
void requireFolder(World& world, const std::string& folderId);
void requireTeamOfProject(World& world, const std::string& teamId, const std::string& projectId);
std::string projectOfFolder(World& world, const std::string& folderId);

} // namespace orlo::platform
