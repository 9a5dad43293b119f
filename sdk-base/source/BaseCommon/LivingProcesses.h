#pragma once

#include <BaseCommon/Export.h>

#include <filesystem>
#include <optional>

// Which processes use the local root of the moment. Whoever cleans up there learns from it what can't be theirs. Nothing here throws; all
// functions may be called from any thread.
namespace orlo::utils {

/// Tells others that this process lives, until its end, however that comes. To be called before it makes a file that it alone knows of.
/// Costs nothing to speak of when it has been told before.
/// Returns: false if it can't be told.
ORLO_BASE_API bool tellThatProcessLives();

/// When the first of the living processes told so: a file that was last written before is none of theirs. Empty if that can't be known.
ORLO_BASE_API std::optional<std::filesystem::file_time_type> startOfOldestProcess();

} // namespace orlo::utils
