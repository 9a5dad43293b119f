#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace orlo {

struct JobRow
{
    std::string id;
    std::string typeKey;
    std::string json;
    std::int64_t createTime = 0;
    int jobType = 0;
    /// Who handed the job over; empty where nobody was signed in.
    std::string account;
    /// Given by the database: rises from row to row.
    std::int64_t rank = 0;
    /// How many of its runs have failed.
    unsigned attempts = 0;
};

/// From the columns rank, id, typeKey, json, createTime, jobType, account.
JobRow jobRowFrom(SQLite::Statement& statement);

/// The file isn't a job database, or not a sound one.
class DamagedDatabase : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// One connection to a job database. Everything throws on failure, DamagedDatabase or another std::exception. Not for two threads at once.
class JobDatabase
{
public:
    /// Makes the file if there is none, checks it, and brings it to the newest schema.
    explicit JobDatabase(const std::wstring& path);

    /// Makes a new database with the rows in it: one file, which is on disk when this comes back.
    static void make(const std::wstring& path, const std::vector<JobRow>& rows);

    /// Writes a row, or replaces it; one that is there already keeps its rank and its account.   Returns: the account that the row has.
    std::string put(const JobRow& row);
    /// The same for many; all or none.
    void put(const std::vector<JobRow>& rows);
    void erase(const std::string& id);
    bool contains(const std::string& id);
    /// Notes how many runs of a job have failed; nothing for one without a row.
    void setAttempts(const std::string& id, unsigned attempts);
    /// The next rows above the rank, in the order of their ranks.
    std::vector<JobRow> rowsAfter(std::int64_t rank, std::size_t atMost);

    /// Changes when another connection has written.
    int dataVersion();
    /// Whether the file that was opened is still the one at its path.
    bool isInPlace() const;
    /// A damaged database is to be set aside as it is: nothing more goes from the log into it when the connection ends.
    void keepAsItIs();

private:
    void check();
    void configure();
    std::vector<JobRow> rowsAfter(const char* query, std::int64_t rank, std::size_t atMost);

    SQLite::Database m_database;
};

} // namespace orlo
