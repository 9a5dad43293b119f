#pragma once

#include "JobDatabase.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

namespace orlo {

/// The folder in which a job keeps its copy of a file: named by a UUID, with the file in it, or the half of it, or nothing yet.
struct JobCopyFolder
{
    std::filesystem::path path;
    std::vector<std::filesystem::path> files;
    std::filesystem::file_time_type written;
};

/// By the UUIDs, in lower case.
using JobCopies = std::unordered_multimap<std::string, JobCopyFolder>;

/// Those below a folder, wherever the ids of projects put them. Links are not followed.
JobCopies jobCopiesBelow(const std::wstring& folder);

/// Takes those out whose UUID stands anywhere in the text, as in a row's JSON.
void dropNamed(const std::string& text, JobCopies& copies);

/// Whether any of them has a file in it.
bool holdFiles(const JobCopies& copies);

/// How many with a file in them no row names.
std::size_t copiesWithoutRow(const std::wstring& folder, const std::vector<JobRow>& rows);

/// Removes the folder with what stood in it, unless something came to it since.   Returns: whether it is gone.
bool removeCopy(const JobCopyFolder& copy);

} // namespace orlo
