#pragma once

#include "../Server/Router.h"

namespace orlo::platform {

void addProjectRoutes(Router& router);
void addFolderRoutes(Router& router);
void addDatasetRoutes(Router& router);
void addVersionRoutes(Router& router);
void addConfigRoutes(Router& router);
void addFontRoutes(Router& router);
void addFileRoutes(Router& router);
void addBlobRoutes(Router& router);
void addDrawingRoutes(Router& router);
void addTranslationRoutes(Router& router);
void addControlRoutes(Router& router);
void addTransferControlRoutes(Router& router);

} // namespace orlo::platform
