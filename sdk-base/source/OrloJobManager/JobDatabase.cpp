#include "JobDatabase.h"

#include "JobSchema.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>

#include <SQLiteCpp/Transaction.h>
#include <sqlite3.h>

#include <algorithm>
#include <utility>

namespace orlo {

namespace {

// Long enough for another process to flush what it writes.
constexpr int busyMilliseconds = 5000;

[[noreturn]] void rethrow(const SQLite::Exception& thrown)
{
    const int code = thrown.getErrorCode() & 0xff;
    if (code == SQLITE_CORRUPT || code == SQLITE_NOTADB)
        throw DamagedDatabase(thrown.what());
    throw thrown;
}

/// Runs the work, and tells damage from other failures.
template <class Work>
auto guarded(const Work& work)
{
    try {
        return work();
    }
    catch (const SQLite::Exception& thrown) {
        rethrow(thrown);
    }
}

/// The same for a database that was sound when it was opened: a statement that fails by itself doesn't fit the tables any more.
template <class Work>
auto atWork(const Work& work)
{
    try {
        return guarded(work);
    }
    catch (const SQLite::Exception& thrown) {
        if (thrown.getErrorCode() == SQLITE_ERROR)
            throw DamagedDatabase(thrown.what());
        throw;
    }
}

constexpr const char* rowsAlone =
    "SELECT rank, id, typeKey, json, createTime, jobType, account, 0 FROM job WHERE rank > ? ORDER BY rank LIMIT ?";
constexpr const char* rowsWithAttempts =
    "SELECT rank, id, typeKey, json, createTime, jobType, account, coalesce(attempts, 0) FROM job LEFT JOIN kept USING (rank) "
    "WHERE rank > ? ORDER BY rank LIMIT ?";

std::string systemName(const std::wstring& path)
{
    return utils::toSystemPath(path).u8string();
}

// The rows tell of the user's files, so they are the user's alone; the files beside the database take its mode on.
const std::wstring& madePrivately(const std::wstring& path)
{
    if (!utils::fileExists(path) && utils::writeNewFile(path, {}, true))
        utils::flushFolder(FilePath(path).GetDirectoryName());
    return path;
}

SQLite::Database openExisting(const std::wstring& path, int flags)
{
    return guarded([&] { return SQLite::Database(systemName(path), flags, busyMilliseconds); });
}

// A row that is there already keeps its rank, and so its place, and the account of whoever handed it over.
std::string putRow(SQLite::Database& database, const JobRow& row)
{
    SQLite::Statement statement(
        database, "INSERT INTO job (id, typeKey, json, createTime, jobType, account) VALUES (?, ?, ?, ?, ?, ?) ON CONFLICT (id) DO UPDATE "
                  "SET typeKey = excluded.typeKey, json = excluded.json, createTime = excluded.createTime, jobType = "
                  "excluded.jobType RETURNING account");
    statement.bind(1, row.id);
    statement.bind(2, row.typeKey);
    statement.bind(3, row.json);
    statement.bind(4, row.createTime);
    statement.bind(5, row.jobType);
    statement.bind(6, row.account);
    std::string account;
    while (statement.executeStep())
        account = statement.getColumn(0).getString();
    return account;
}

} // namespace

JobRow jobRowFrom(SQLite::Statement& statement)
{
    JobRow row;
    row.rank = statement.getColumn(0).getInt64();
    row.id = statement.getColumn(1).getString();
    row.typeKey = statement.getColumn(2).getString();
    row.json = statement.getColumn(3).getString();
    row.createTime = statement.getColumn(4).getInt64();
    row.jobType = statement.getColumn(5).getInt();
    row.account = statement.getColumn(6).getString();
    return row;
}

JobDatabase::JobDatabase(const std::wstring& path)
    : m_database(openExisting(madePrivately(path), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE))
{
    guarded([&] {
        keepAsItIs();
        check();
        configure();
        migrate(m_database, jobSchemaSteps());
        sqlite3_db_config(m_database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
    });
}

// Before anything is written, and of one state: another process may be taking steps.
void JobDatabase::check()
{
    const SQLite::Transaction transaction(m_database);
    // What may not be written is opened for reading without a word.
    if (sqlite3_db_readonly(m_database.getHandle(), "main") == 1)
        throw std::runtime_error("it is read-only");
    std::string verdict = m_database.execAndGet("PRAGMA integrity_check(1)").getString();
    if (verdict != "ok") {
        std::replace(verdict.begin(), verdict.end(), '\n', ' ');
        throw DamagedDatabase(verdict);
    }
    if (!hasSchema(m_database, jobSchemaSteps()) || !isTableOfKeptSound(m_database))
        throw DamagedDatabase("its tables aren't those of a job database");
}

void JobDatabase::configure()
{
    m_database.exec("PRAGMA journal_mode = WAL");
    m_database.exec("PRAGMA synchronous = FULL");
    // What was deleted must not come back when pages are read one by one.
    m_database.exec("PRAGMA secure_delete = ON");
}

void JobDatabase::keepAsItIs()
{
    sqlite3_db_config(m_database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

void JobDatabase::make(const std::wstring& path, const std::vector<JobRow>& rows)
{
    JobDatabase database(path);
    database.put(rows);
    guarded([&] {
        if (database.m_database.execAndGet("PRAGMA wal_checkpoint(TRUNCATE)").getInt() != 0)
            throw std::runtime_error("the new database can't be written");
    });
}

std::string JobDatabase::put(const JobRow& row)
{
    return atWork([&] {
        SQLite::Transaction transaction(m_database, SQLite::TransactionBehavior::IMMEDIATE);
        std::string account = putRow(m_database, row);
        transaction.commit();
        return account;
    });
}

void JobDatabase::put(const std::vector<JobRow>& rows)
{
    atWork([&] {
        SQLite::Transaction transaction(m_database, SQLite::TransactionBehavior::IMMEDIATE);
        for (const JobRow& row : rows)
            putRow(m_database, row);
        transaction.commit();
    });
}

void JobDatabase::erase(const std::string& id)
{
    atWork([&] {
        SQLite::Statement statement(m_database, "DELETE FROM job WHERE id = ?");
        statement.bind(1, id);
        statement.exec();
    });
}

bool JobDatabase::contains(const std::string& id)
{
    return atWork([&] {
        SQLite::Statement statement(m_database, "SELECT 1 FROM job WHERE id = ?");
        statement.bind(1, id);
        return statement.executeStep();
    });
}

void JobDatabase::setAttempts(const std::string& id, unsigned attempts)
{
    atWork([&] {
        SQLite::Transaction transaction(m_database, SQLite::TransactionBehavior::IMMEDIATE);
        addTableOfKept(m_database);
        SQLite::Statement statement(m_database, "INSERT OR REPLACE INTO kept (rank, attempts) SELECT rank, ? FROM job WHERE id = ?");
        statement.bind(1, attempts);
        statement.bind(2, id);
        statement.exec();
        transaction.commit();
    });
}

std::vector<JobRow> JobDatabase::rowsAfter(std::int64_t rank, std::size_t atMost)
{
    return atWork([&] { return rowsAfter(hasTableOfKept(m_database) ? rowsWithAttempts : rowsAlone, rank, atMost); });
}

std::vector<JobRow> JobDatabase::rowsAfter(const char* query, std::int64_t rank, std::size_t atMost)
{
    std::vector<JobRow> rows;
    SQLite::Statement statement(m_database, query);
    statement.bind(1, rank);
    statement.bind(2, static_cast<std::int64_t>(atMost));
    while (statement.executeStep()) {
        rows.push_back(jobRowFrom(statement));
        rows.back().attempts = statement.getColumn(7).getUInt();
    }
    return rows;
}

int JobDatabase::dataVersion()
{
    return atWork([&] { return m_database.execAndGet("PRAGMA data_version").getInt(); });
}

bool JobDatabase::isInPlace() const
{
    int hasMoved = 0;
    // A system that can't tell says so with an error, and hasn't moved it then.
    const int result = sqlite3_file_control(m_database.getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    return result != SQLITE_OK || hasMoved == 0;
}

} // namespace orlo
