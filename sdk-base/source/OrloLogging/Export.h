#pragma once

#include <BaseCommon/Export.h>

#if defined(OrloLogging_EXPORTS)
#define ORLO_LOGGING_API ORLO_EXPORT
#else
#define ORLO_LOGGING_API ORLO_IMPORT
#endif
