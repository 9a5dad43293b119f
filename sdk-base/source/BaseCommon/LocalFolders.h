#pragma once

#include <BaseCommon/Export.h>

#include <string>

// The local folders of the library. Each call tells the place as it is now and makes the folder if it is missing; the paths carry no
// separator at the end. All functions may be called from any thread.
namespace orlo::utils {

/// Puts all local folders below `folder`, for a host that keeps them in a place of its own. An empty text brings the user's usual
/// places back: the XDG base directories on Linux, the known folders on Windows.
ORLO_BASE_API void setLocalRoot(const std::wstring& folder);

/// Files on their way to another place. On the file system of the caches wherever the user's usual places allow it.
ORLO_BASE_API std::wstring getTempPath();
/// The user's application data; the library's own data stand in folders of it.
ORLO_BASE_API std::wstring getLocalAppDataPath();
/// The job database and the jobs' private copies.
ORLO_BASE_API std::wstring getLocalDbCachePath();
/// Downloaded files.
ORLO_BASE_API std::wstring getLocalFileCachePath();
/// Downloaded templates.
ORLO_BASE_API std::wstring getTemplatesPath();
/// The marks of the processes that live with this local root.
ORLO_BASE_API std::wstring getProcessesPath();
/// Log files.
ORLO_BASE_API std::wstring getLogPath();

} // namespace orlo::utils
