#pragma once

// ORLO_EXPORT marks what a shared library of this tree hands out, ORLO_IMPORT what its users take in.
// Each library exports under a macro of its own, so that one of them may be built while it uses another.
#if defined(_WIN32)
#define ORLO_EXPORT __declspec(dllexport)
#define ORLO_IMPORT __declspec(dllimport)
#else
#define ORLO_EXPORT __attribute__((visibility("default")))
#define ORLO_IMPORT ORLO_EXPORT
#endif

#if defined(BaseCommon_EXPORTS)
#define ORLO_BASE_API ORLO_EXPORT
#else
#define ORLO_BASE_API ORLO_IMPORT
#endif
