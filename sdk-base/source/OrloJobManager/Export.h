#pragma once

#include <BaseCommon/Export.h>

#if defined(OrloJobManager_EXPORTS)
#define ORLO_JOB_API ORLO_EXPORT
#else
#define ORLO_JOB_API ORLO_IMPORT
#endif
