#pragma once

#include "../Server/Router.h"
#include "../World.h"

namespace orlo::platform {

/// Those of all families.
void addRoutes(Router& router);

// Routes for clients are in the source of their name. Control calls stand beside the seeding functions that they call: those of users in
// Users.cpp, and so on.
void addUserControls(Router& router);
void addProjectControls(Router& router);
void addProjectRoutes(Router& router);
void addFolderControls(Router& router);
void addFolderRoutes(Router& router);
void addDatasetControls(Router& router);
void addDatasetRoutes(Router& router);
void addVersionRoutes(Router& router);
void addConfigRoutes(Router& router);
void addFontRoutes(Router& router);
void addFileControls(Router& router);
void addFileRoutes(Router& router);
void addBlobRoutes(Router& router);
void addDrawingRoutes(Router& router);
void addMonitorRoutes(Router& router);
void addTeamControls(Router& router);
void addTeamRoutes(Router& router);
void addShareControls(Router& router);
void addShareRoutes(Router& router);
void addIssueRoutes(Router& router);
void addItemRoutes(Router& router);
void addMessageRoutes(Router& router);
void addTranslationRoutes(Router& router);
void addComponentRoutes(Router& router);
void addTemplateRoutes(Router& router);
void addModuleRoutes(Router& router);
void addArchiveRoutes(Router& router);
void addServerControls(Router& router);

} // namespace orlo::platform
