#pragma once

#include <string>

namespace orlo {

/// Makes the private copy of a job: a folder of its own below the job copies of the project, with nothing in it but the
/// file. A job thus doesn't care what becomes of the user's file.
/// fileName: empty for that of the path.   copy: where the copy stands.
bool CopyFileToTempPath(const std::wstring& path, const std::string& projectId, const std::wstring& fileName, std::wstring& copy);

/// Deletes a copy and its folder if that holds nothing else. A file that lies elsewhere is never touched: it is the user's.
void deleteJobCopy(const std::wstring& copy);

} // namespace orlo
