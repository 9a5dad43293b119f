#pragma once

#include <BaseCommon/Export.h>

#include <cstddef>

namespace orlo::utils {

/// Removes from the temporary folder, the file cache and the folder of templates what transfers of processes that are gone left unfinished
/// there: files under temporary names, last written before every living process began. Links are not followed. Ends after some ten
/// thousand files.
/// Returns: how many were removed.   Threads: any; nothing throws.
ORLO_BASE_API std::size_t removeStrayTransfers();

} // namespace orlo::utils
