#pragma once

#include <BaseCommon/Export.h>

#if defined(OrloNetwork_EXPORTS)
#define ORLO_NETWORK_API ORLO_EXPORT
#else
#define ORLO_NETWORK_API ORLO_IMPORT
#endif
