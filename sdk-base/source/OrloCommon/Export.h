#pragma once

#include <BaseCommon/Export.h>

#if defined(OrloCommon_EXPORTS)
#define ORLO_COMMON_API ORLO_EXPORT
#else
#define ORLO_COMMON_API ORLO_IMPORT
#endif
