#pragma once

#include "JobDatabase.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orlo {

/// What could be read of a damaged database.
struct Salvage
{
    /// Sound ones, each once, in the order of their ranks.
    std::vector<JobRow> rows;
    /// How many more the index names; empty where nothing is left of the index.
    std::optional<std::size_t> lost;
};

/// Reads every page of a damaged database by itself, whatever became of the others. The database and its log stay as they are: what is read
/// is a copy beside them. Throws a std::exception where that can't be made.
Salvage salvageJobs(const std::wstring& path);

} // namespace orlo
