#pragma once

#include "Router.h"

namespace orlo::platform {

void addProjectRoutes(Router& router);
void addFolderRoutes(Router& router);
void addDatasetRoutes(Router& router);
void addVersionRoutes(Router& router);
void addConfigRoutes(Router& router);
void addFontRoutes(Router& router);
void addControlRoutes(Router& router);

} // namespace orlo::platform
