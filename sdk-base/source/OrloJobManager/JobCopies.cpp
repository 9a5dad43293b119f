#include "JobCopies.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Uuid.h>

#include <algorithm>
#include <optional>

namespace orlo {

namespace {

namespace fs = std::filesystem;

/// Whether a copy's folder may have that name; a project's may have it too.
bool isNameOfCopy(const std::string& name)
{
    return uuid::IsValidGUID(name) && name[14] == '4' && name.find_first_of("ABCDEF") == std::string::npos;
}

/// Takes an entry of a folder in.   Returns: false for one that a copy's folder doesn't have.
bool take(const fs::directory_entry& entry, JobCopyFolder& copy)
{
    std::error_code error;
    if (entry.symlink_status(error).type() != fs::file_type::regular)
        return false;
    copy.written = std::max(copy.written, fs::last_write_time(entry.path(), error));
    copy.files.push_back(entry.path());
    return !error;
}

/// Empty for a folder that is none of a copy.
std::optional<JobCopyFolder> copyIn(const fs::path& folder)
{
    std::error_code error;
    JobCopyFolder copy{folder, {}, fs::last_write_time(folder, error)};
    bool isCopys = !error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end && isCopys; at.increment(error))
        isCopys = take(*at, copy);
    const auto wholeFiles = std::count_if(copy.files.begin(), copy.files.end(),
                                          [](const fs::path& file) { return !utils::isHalfMadeName(utils::fromPath(file.filename())); });
    return isCopys && !error && wholeFiles <= 1 ? std::optional(copy) : std::nullopt;
}

// Ids of projects may hold separators, so their folders may stand in each other.
void collect(const fs::path& folder, int depth, JobCopies& copies)
{
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        std::error_code statusError;
        if (at->symlink_status(statusError).type() != fs::file_type::directory)
            continue;
        const std::string name = at->path().filename().u8string();
        std::optional<JobCopyFolder> copy = isNameOfCopy(name) ? copyIn(at->path()) : std::nullopt;
        if (copy)
            copies.emplace(name, std::move(*copy));
        else if (depth > 1)
            collect(at->path(), depth - 1, copies);
    }
}

} // namespace

JobCopies jobCopiesBelow(const std::wstring& folder)
{
    constexpr int deepest = 16;
    JobCopies copies;
    collect(utils::makePath(folder), deepest, copies);
    return copies;
}

void dropNamed(const std::string& text, JobCopies& copies)
{
    constexpr std::size_t length = 36;
    constexpr std::size_t firstHyphen = 8;
    for (std::size_t hyphen = text.find('-'); hyphen != std::string::npos; hyphen = text.find('-', hyphen + 1)) {
        if (hyphen < firstHyphen || hyphen - firstHyphen + length > text.size() || text[hyphen + 5] != '-')
            continue;
        std::string name = text.substr(hyphen - firstHyphen, length);
        std::transform(name.begin(), name.end(), name.begin(), [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c; });
        copies.erase(name);
    }
}

bool holdFiles(const JobCopies& copies)
{
    return std::any_of(copies.begin(), copies.end(), [](const auto& copy) { return !copy.second.files.empty(); });
}

std::size_t copiesWithoutRow(const std::wstring& folder, const std::vector<JobRow>& rows)
{
    JobCopies copies = jobCopiesBelow(folder);
    for (const JobRow& row : rows)
        dropNamed(row.json, copies);
    return static_cast<std::size_t>(
        std::count_if(copies.begin(), copies.end(), [](const auto& copy) { return !copy.second.files.empty(); }));
}

bool removeCopy(const JobCopyFolder& copy)
{
    const std::optional<JobCopyFolder> now = copyIn(copy.path);
    if (!now || now->files != copy.files)
        return false;
    std::error_code error;
    for (const fs::path& file : copy.files)
        fs::remove(file, error);
    return fs::remove(copy.path, error);
}

} // namespace orlo
