#include "StrayCopies.h"

#include "JobLog.h"
#include "JobStore.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Uuid.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <unordered_map>

namespace orlo {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t guidLength = 36;

/// The folders of copies, by their names.
using Copies = std::unordered_multimap<std::string, fs::path>;

/// Whether a copy's folder may have that name; a project's may have it too.
bool isNameOfCopy(const std::string& name)
{
    return uuid::IsValidGUID(name) && name[14] == '4' && name.find_first_of("ABCDEF") == std::string::npos;
}

/// What a folder holds, as far as that makes it a copy's or not.
struct Content
{
    bool isCopys = true;
    std::vector<fs::path> files;
    fs::file_time_type written = fs::file_time_type::min();
};

void look(const fs::directory_entry& entry, Content& content)
{
    std::error_code error;
    const bool isFile = entry.symlink_status(error).type() == fs::file_type::regular;
    content.written = std::max(content.written, isFile ? fs::last_write_time(entry.path(), error) : content.written);
    content.isCopys = content.isCopys && isFile && !error;
    content.files.push_back(entry.path());
}

/// A copy's folder holds the file, or the half of it, or nothing yet.
Content contentOf(const fs::path& folder)
{
    Content content;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end && content.isCopys; at.increment(error))
        look(*at, content);
    const auto wholeFiles = std::count_if(content.files.begin(), content.files.end(),
                                          [](const fs::path& file) { return !utils::isHalfMadeName(utils::fromPath(file.filename())); });
    const fs::file_time_type made = error ? content.written : fs::last_write_time(folder, error);
    content.written = std::max(content.written, made);
    content.isCopys = content.isCopys && !error && wholeFiles <= 1;
    return content;
}

/// Collects the copies below a folder. Ids of projects may hold separators, so their folders may stand in each other.
void collect(const fs::path& folder, fs::file_time_type before, int depth, Copies& copies)
{
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        std::error_code statusError;
        if (at->symlink_status(statusError).type() != fs::file_type::directory)
            continue;
        const std::string name = at->path().filename().u8string();
        const Content content = isNameOfCopy(name) ? contentOf(at->path()) : Content{false, {}, {}};
        if (!content.isCopys && depth > 1)
            collect(at->path(), before, depth - 1, copies);
        else if (content.isCopys && content.written < before)
            copies.emplace(name, at->path());
    }
}

/// Takes those out whose name stands anywhere in the text.
void dropNamed(const std::string& text, Copies& copies)
{
    constexpr std::size_t firstHyphen = 8;
    for (std::size_t hyphen = text.find('-'); hyphen != std::string::npos; hyphen = text.find('-', hyphen + 1)) {
        if (hyphen < firstHyphen || hyphen - firstHyphen + guidLength > text.size() || text[hyphen + 5] != '-')
            continue;
        std::string name = text.substr(hyphen - firstHyphen, guidLength);
        std::transform(name.begin(), name.end(), name.begin(), [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c + 32) : c; });
        copies.erase(name);
    }
}

/// Returns: false if not all rows could be read.
bool dropNamedByRows(JobStore& store, Copies& copies)
{
    constexpr std::size_t atOnce = 256;
    for (std::int64_t rank = 0; !copies.empty();) {
        const std::optional<std::vector<JobRow>> rows = store.rowsAfter(rank, atOnce);
        if (!rows)
            return false;
        if (rows->empty())
            return true;
        for (const JobRow& row : *rows)
            dropNamed(row.json, copies);
        rank = rows->back().rank;
    }
    return true;
}

/// The databases that were set aside beside that one.
bool hasOneSetAside(const std::wstring& database)
{
    std::vector<std::wstring> files;
    const std::wstring head = utils::getFileName(database) + L".damaged-";
    return !utils::getSubFiles(FilePath(database).GetDirectoryName(), files) ||
           std::any_of(files.begin(), files.end(), [&](const std::wstring& file) { return utils::getFileName(file).rfind(head, 0) == 0; });
}

/// One that never held a job can't be the one whose jobs the copies belong to.
bool hasHeldJobs(const std::wstring& database)
{
    try {
        constexpr int busyMilliseconds = 5000;
        SQLite::Database file(utils::toSystemPath(database).u8string(), SQLite::OPEN_READONLY, busyMilliseconds);
        return file.execAndGet("SELECT count(*) FROM sqlite_sequence WHERE name = 'job'").getInt() != 0;
    }
    catch (const SQLite::Exception&) {
        return false;
    }
}

bool removeCopy(const fs::path& folder)
{
    const Content content = contentOf(folder);
    if (!content.isCopys)
        return false;
    std::error_code error;
    for (const fs::path& file : content.files)
        fs::remove(file, error);
    return fs::remove(folder, error);
}

void removeAll(const Copies& copies)
{
    const auto removed = std::count_if(copies.begin(), copies.end(), [](const auto& copy) { return removeCopy(copy.second); });
    if (removed != 0)
        joblog::info(L"private copies that no job names were removed: " + utils::toWstring(static_cast<long long>(removed)));
}

} // namespace

void removeStrayCopies(JobStore& store)
try {
    constexpr int deepest = 16;
    const std::wstring folder = FilePath(store.path()).GetDirectoryName();
    const auto start = utils::startOfOldestProcess();
    // The processes that live are known at the local root of the moment only.
    if (!start || folder != utils::getLocalDbCachePath())
        return;
    Copies copies;
    collect(utils::makePath(folder), *start, deepest, copies);
    if (!dropNamedByRows(store, copies) || copies.empty())
        return;
    if (hasOneSetAside(store.path()) || !hasHeldJobs(store.path()))
        joblog::warning(L"private copies that no job names stay, since a database that was lost may name them: " + folder);
    else
        removeAll(copies);
}
catch (...) {
    joblog::error(L"stray copies can't be looked for: " + joblog::currentException());
}

} // namespace orlo
