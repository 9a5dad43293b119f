#include "StrayFiles.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>

#include <exception>

namespace fs = std::filesystem;

namespace orlo::utils {

namespace {

constexpr std::size_t mostEntries = 10000;

bool isTemporaryName(const std::wstring& name)
{
    return isHalfMadeName(name) || uuid::IsValidGUID(toString(name));
}

// A link is no regular file, so it stays.
bool removeIfStray(const fs::directory_entry& entry, fs::file_time_type before, bool (*hasOurName)(const std::wstring&))
{
    std::error_code error;
    if (!hasOurName(fromPath(entry.path().filename())) || entry.symlink_status(error).type() != fs::file_type::regular)
        return false;
    const fs::file_time_type written = fs::last_write_time(entry.path(), error);
    return !error && written < before && fs::remove(entry.path(), error) && !error;
}

template <class Iterator>
std::size_t removeIn(const std::wstring& folder, fs::file_time_type before, bool (*hasOurName)(const std::wstring&))
{
    std::size_t removed = 0;
    std::size_t seen = 0;
    std::error_code error;
    for (Iterator at(makePath(folder), fs::directory_options::skip_permission_denied, error), end;
         !error && at != end && seen < mostEntries; at.increment(error), ++seen)
        removed += removeIfStray(*at, before, hasOurName) ? 1 : 0;
    return removed;
}

} // namespace

std::size_t removeStrayTransfers()
try {
    const auto start = startOfOldestProcess();
    if (!start)
        return 0;
    return removeIn<fs::directory_iterator>(getTempPath(), *start, &isTemporaryName) +
           removeIn<fs::recursive_directory_iterator>(getLocalFileCachePath(), *start, &isHalfMadeName) +
           removeIn<fs::recursive_directory_iterator>(getTemplatesPath(), *start, &isHalfMadeName);
}
catch (const std::exception&) { // no memory; the litter waits
    return 0;
}

} // namespace orlo::utils
