#pragma once

#include <BaseCommon/Export.h>

#if defined(OrloAuth_EXPORTS)
#define ORLO_AUTH_API ORLO_EXPORT
#else
#define ORLO_AUTH_API ORLO_IMPORT
#endif
