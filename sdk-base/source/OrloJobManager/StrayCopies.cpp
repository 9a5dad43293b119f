#include "StrayCopies.h"

#include "JobCopies.h"
#include "JobLog.h"
#include "JobStore.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LivingProcesses.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

namespace orlo {

namespace {

namespace fs = std::filesystem;

void dropThoseSince(fs::file_time_type start, JobCopies& copies)
{
    for (auto copy = copies.begin(); copy != copies.end();)
        copy = copy->second.written < start ? std::next(copy) : copies.erase(copy);
}

/// Returns: false if not all rows could be read.
bool dropNamedByRows(JobStore& store, JobCopies& copies)
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

void removeAll(const JobCopies& copies)
{
    const auto removed = std::count_if(copies.begin(), copies.end(), [](const auto& copy) { return removeCopy(copy.second); });
    if (removed != 0)
        log::info(L"private copies that no job names were removed: " + utils::toWstring(static_cast<long long>(removed)));
}

} // namespace

void removeStrayCopies(JobStore& store)
try {
    const std::wstring folder = FilePath(store.path()).GetDirectoryName();
    const auto start = utils::startOfOldestProcess();
    // The processes that live are known at the local root of the moment only.
    if (!start || folder != utils::getLocalDbCachePath())
        return;
    JobCopies copies = jobCopiesBelow(folder);
    dropThoseSince(*start, copies);
    if (!dropNamedByRows(store, copies) || copies.empty())
        return;
    if (hasOneSetAside(store.path()) || !hasHeldJobs(store.path()))
        log::warning(L"private copies that no job names stay, since a database that was lost may name them: " + folder);
    else
        removeAll(copies);
}
catch (...) {
    log::error(L"stray copies can't be looked for: " + wordsOfCaught());
}

} // namespace orlo
