#include "LivingProcesses.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/Uuid.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <mutex>

namespace fs = std::filesystem;

namespace orlo::utils {

namespace {

// A process holds the lock of its mark for as long as it lives; the time at which the mark was written is that of its beginning. The
// clock is that of the file system, which gives all other files their times too.
struct Mark
{
    std::wstring path;
    FileLock lock;
};

struct Marks
{
    std::mutex mutex;
    std::map<std::wstring, Mark> byFolder;
};

Marks& marks()
{
    static Marks& instance = utils::neverDestroyed(new Marks);
    return instance;
}

constexpr std::wstring_view markEnd = L".alive";

bool isMark(const std::wstring& path)
{
    const std::wstring name = getFileName(path);
    return name.size() > markEnd.size() && name.substr(name.size() - markEnd.size()) == markEnd &&
           uuid::IsValidGUID(toString(name.substr(0, name.size() - markEnd.size())));
}

// Another process may find the mark before its lock is taken, take it for that of a dead one, and remove it.
bool make(Mark& mark, const std::wstring& folder)
{
    constexpr int mostAttempts = 8;
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const std::wstring guid = generateGuid();
        if (guid.empty() || !hasDirectory(folder))
            return false;
        mark.path = FilePath::Combine(folder, guid).append(markEnd);
        if (mark.lock.acquire(mark.path, 0) && hasFile(mark.path))
            return true;
    }
    mark.lock.release();
    return false;
}

bool removeIfDead(const std::wstring& path)
{
    FileLock lock;
    return lock.acquire(path, 0) && (removeFile(path) || !hasFile(path));
}

/// Empty where a living process doesn't tell its beginning.
std::optional<fs::file_time_type> earliest(const std::vector<std::wstring>& paths)
{
    auto first = fs::file_time_type::max();
    for (const std::wstring& path : paths) {
        if (!isMark(path) || removeIfDead(path))
            continue;
        std::error_code error;
        const fs::file_time_type start = fs::last_write_time(makePath(path), error);
        if (!error)
            first = std::min(first, start);
        else if (hasFile(path))
            return std::nullopt;
    }
    return first;
}

} // namespace

bool tellThatProcessLives()
{
    const std::wstring folder = getProcessesPath();
    Marks& known = marks();
    const std::lock_guard lock(known.mutex);
    Mark& mark = known.byFolder[folder];
    return (mark.lock.isHeld() && hasFile(mark.path)) || make(mark, folder);
}

std::optional<fs::file_time_type> startOfOldestProcess()
{
    std::vector<std::wstring> paths;
    if (!tellThatProcessLives() || !getSubFiles(getProcessesPath(), paths))
        return std::nullopt;
    const std::optional<fs::file_time_type> start = earliest(paths);
    // A clock that was set back makes what a living process writes now look older than its beginning.
    constexpr std::chrono::seconds coarseness{2};
    return start && *start <= fs::file_time_type::clock::now() + coarseness ? start : std::nullopt;
}

} // namespace orlo::utils
