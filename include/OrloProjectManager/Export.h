#pragma once

#include <BaseCommon/Export.h>

#if defined(OrloProjectManager_EXPORTS)
#define ORLO_PROJECT_API ORLO_EXPORT
#else
#define ORLO_PROJECT_API ORLO_IMPORT
#endif
