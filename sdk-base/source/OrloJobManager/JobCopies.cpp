#include "JobCopies.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Uuid.h>

#include <algorithm>
#include <filesystem>
#include <unordered_set>

namespace orlo {

namespace {

namespace fs = std::filesystem;

/// What stands directly in a folder; nothing where it can't be listed.
std::vector<fs::directory_entry> entriesOf(const fs::path& folder)
{
    std::vector<fs::directory_entry> entries;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        entries.push_back(*at);
    return entries;
}

bool isFolder(const fs::directory_entry& entry)
{
    std::error_code error;
    return entry.symlink_status(error).type() == fs::file_type::directory;
}

bool isFile(const fs::directory_entry& entry)
{
    std::error_code error;
    return entry.symlink_status(error).type() == fs::file_type::regular;
}

void addCopies(const fs::path& folder, int depth, std::vector<std::string>& names)
{
    for (const fs::directory_entry& entry : entriesOf(folder)) {
        if (!isFolder(entry))
            continue;
        const std::vector<fs::directory_entry> inside = entriesOf(entry.path());
        const std::string name = entry.path().filename().u8string();
        if (uuid::IsValidGUID(name) && std::any_of(inside.begin(), inside.end(), isFile))
            names.push_back(name);
        else if (depth > 1)
            addCopies(entry.path(), depth - 1, names);
    }
}

void addNamesIn(const std::string& json, std::unordered_set<std::string>& names)
{
    constexpr std::size_t length = 36;
    for (std::size_t at = 0; at + length <= json.size(); ++at) {
        if (json[at + 8] == '-' && uuid::IsValidGUID(json.substr(at, length)))
            names.insert(json.substr(at, length));
    }
}

} // namespace

std::vector<std::string> jobCopies(const std::wstring& folder)
{
    std::vector<std::string> names;
    addCopies(utils::makePath(folder), 2, names);
    return names;
}

std::size_t copiesWithoutRow(const std::wstring& folder, const std::vector<JobRow>& rows)
{
    std::unordered_set<std::string> named;
    for (const JobRow& row : rows)
        addNamesIn(row.json, named);
    const std::vector<std::string> copies = jobCopies(folder);
    return static_cast<std::size_t>(
        std::count_if(copies.begin(), copies.end(), [&](const std::string& name) { return named.count(name) == 0; }));
}

} // namespace orlo
