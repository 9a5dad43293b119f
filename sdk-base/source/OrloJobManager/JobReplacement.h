#pragma once

#include "JobSalvage.h"

#include <optional>
#include <string>

// The change from a damaged job database to a new one. The process may end, or the disk be full, in the middle of it: it is then taken up
// again, and the jobs of the damaged one aren't lost. Only for the one process that opens the database; a failure throws a std::exception.
namespace orlo {

/// Whether a change was begun and not ended.
bool isReplacementUnfinished(const std::wstring& path);

/// Whether a database that held something holds nothing: its log is still there, or copies of the files of jobs.
bool isEmptied(const std::wstring& path);

/// Gives the database and the files beside it other names, or goes on doing so.   Returns: where it stands now.
std::wstring setAside(const std::wstring& path);

/// Puts a new database with what can be read of the one that was set aside into its place, and ends the change.   Returns: what was read;
/// empty if the new one was in its place already.
std::optional<Salvage> replaceSetAside(const std::wstring& path, const std::wstring& aside);

} // namespace orlo
