#pragma once

#include "JobDatabase.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orlo {

/// The names of the folders in which jobs keep copies of files: UUIDs, directly in the folder or in one of its folders.
std::vector<std::string> jobCopies(const std::wstring& folder);

/// How many of them no row names.
std::size_t copiesWithoutRow(const std::wstring& folder, const std::vector<JobRow>& rows);

} // namespace orlo
