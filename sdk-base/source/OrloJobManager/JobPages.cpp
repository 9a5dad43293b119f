#include "JobPages.h"

#include <BaseCommon/Files.h>

#include <SQLiteCpp/Database.h>
#include <sqlite3.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace orlo {

namespace {

namespace fs = std::filesystem;

// A page of the job table, and one of its index, each taken for a table of its own: the reader shows them one page after the other. They
// have no types, so that what stands in a page comes out as it is. The rank of a job stands outside of its record, and nothing in its
// place.
constexpr const char* onePageTables = R"sql(
CREATE TABLE leaf (vacant, id, typeKey, json, createTime, jobType, account, beyond);
CREATE TABLE entry (id, rank, PRIMARY KEY (id, rank)) WITHOUT ROWID;
)sql";

constexpr std::size_t headSize = 100;

unsigned byteAt(const std::string& bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]);
}

/// That of new databases where the head doesn't tell.
std::size_t pageSizeOf(const std::string& head)
{
    constexpr std::size_t usual = 4096;
    if (head.size() < headSize || head.compare(0, 16, std::string("SQLite format 3\0", 16)) != 0)
        return usual;
    const std::size_t told = byteAt(head, 16) * 256 + byteAt(head, 17);
    const std::size_t size = told == 1 ? 65536 : told;
    return size >= 512 && (size & (size - 1)) == 0 ? size : usual;
}

std::string firstPage(std::size_t pageSize)
{
    SQLite::Database database(":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("PRAGMA page_size = " + std::to_string(pageSize));
    database.exec(onePageTables);
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, void (*)(void*)> bytes(sqlite3_serialize(database.getHandle(), "main", &size, 0), sqlite3_free);
    if (!bytes || static_cast<std::size_t>(size) < pageSize)
        throw std::runtime_error("there is no memory to read the damaged database");
    return {reinterpret_cast<const char*>(bytes.get()), pageSize};
}

std::string headOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string head(headSize, '\0');
    file.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(file.gcount()));
    return head;
}

} // namespace

void passOverDamage(const SQLite::Exception& thrown)
{
    const int code = thrown.getErrorCode() & 0xff;
    if (code == SQLITE_NOMEM || code == SQLITE_IOERR || code == SQLITE_FULL || code == SQLITE_CANTOPEN)
        throw thrown;
}

void JobPagesCopy::Place::clear() const
{
    clearLog();
    for (const wchar_t* end : {L"", L"-journal"})
        utils::removeFile(name + end);
}

void JobPagesCopy::Place::clearLog() const
{
    for (const wchar_t* end : {L"-wal", L"-shm"})
        utils::removeFile(name + end);
}

JobPagesCopy::JobPagesCopy(const std::wstring& damaged) : m_place(damaged + L".reading"), m_path(utils::makePath(m_place.name))
{
    take(damaged, L"");
    take(damaged, L"-wal");
    m_pageSize = pageSizeOf(headOf(m_path));
    fillUp();
    mergeLog();
    putFirstPage(false);
}

void JobPagesCopy::take(const std::wstring& damaged, const wchar_t* end) const
{
    if (utils::fileExists(damaged + end) && !utils::copyFile(damaged + end, m_place.name + end))
        throw std::runtime_error("there is no place for a copy of the damaged database");
}

// A page that was cut keeps what stands in front of the cut. The tables of the first page need two more to point at.
void JobPagesCopy::fillUp() const
{
    std::ofstream(m_path, std::ios::app | std::ios::binary).flush();
    const std::uintmax_t pages = (fs::file_size(m_path) + m_pageSize - 1) / m_pageSize;
    fs::resize_file(m_path, std::max<std::uintmax_t>(pages, 3) * m_pageSize);
}

// The sound part of the log goes over the pages, a first page too.
void JobPagesCopy::mergeLog() const
{
    if (!utils::fileExists(m_place.name + L"-wal"))
        return;
    putFirstPage(true);
    try {
        SQLite::Database(path(), SQLite::OPEN_READWRITE).exec("PRAGMA journal_mode = DELETE");
    }
    catch (const SQLite::Exception& thrown) {
        passOverDamage(thrown);
    }
    m_place.clearLog();
    fillUp();
}

// It tells of two tables instead of the ones that were there, if it was there at all. How many pages follow is asked of the file itself
// where two numbers of the head differ.
void JobPagesCopy::putFirstPage(bool isLogged) const
{
    std::string page = firstPage(m_pageSize);
    page[18] = page[19] = isLogged ? '\2' : '\1';
    page[95] = static_cast<char>(page[27] + 1);
    std::fstream file(m_path, std::ios::in | std::ios::out | std::ios::binary);
    file.write(page.data(), static_cast<std::streamsize>(page.size()));
    if (!file.flush())
        throw std::runtime_error("the copy of the damaged database can't be written");
}

JobPages JobPagesCopy::pages() const
{
    constexpr int leafOfTable = 13;
    constexpr int leafOfIndex = 10;
    constexpr int branchOfIndex = 2;
    JobPages pages;
    std::ifstream file(m_path, std::ios::binary);
    const auto count = static_cast<std::int64_t>(fs::file_size(m_path) / m_pageSize);
    for (std::int64_t page = 2; page <= count; ++page) {
        file.seekg((page - 1) * static_cast<std::int64_t>(m_pageSize));
        const int kind = file.peek();
        if (kind == leafOfTable)
            pages.leaves.push_back(page);
        else if (kind == leafOfIndex || kind == branchOfIndex)
            pages.index.push_back(page);
    }
    return pages;
}

} // namespace orlo
