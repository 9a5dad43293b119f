#include "Routes.h"

namespace orlo::platform {

void addRoutes(Router& router)
{
    addUserControls(router);
    addProjectControls(router);
    addProjectRoutes(router);
    addFolderControls(router);
    addFolderRoutes(router);
    addDatasetControls(router);
    addDatasetRoutes(router);
    addVersionRoutes(router);
    addConfigRoutes(router);
    addFontRoutes(router);
    addFileControls(router);
    addFileRoutes(router);
    addBlobRoutes(router);
    addDrawingRoutes(router);
    addMonitorRoutes(router);
    addTeamControls(router);
    addTeamRoutes(router);
    addShareControls(router);
    addShareRoutes(router);
    addIssueRoutes(router);
    addItemRoutes(router);
    addMessageRoutes(router);
    addTranslationRoutes(router);
    addComponentRoutes(router);
    addTemplateRoutes(router);
    addModuleRoutes(router);
    addArchiveRoutes(router);
    addServerControls(router);
}

} // namespace orlo::platform
