#include "JobSchema.h"

#include <BaseCommon/NeverDestroyed.h>

#include <SQLiteCpp/Transaction.h>

#include <stdexcept>
#include <string>

namespace orlo {

namespace {

// A step is never changed once rows were written with it: a new schema is a new step.
// Ranks are never used twice, so a rank above the last one seen is a new row.
constexpr const char* firstSchema = R"sql(
CREATE TABLE job (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    typeKey TEXT NOT NULL,
    json TEXT NOT NULL,
    createTime INTEGER NOT NULL,
    jobType INTEGER NOT NULL);
)sql";

// Who handed the job over; empty where nobody was signed in, and for rows from before this step.
constexpr const char* accountColumn = "ALTER TABLE job ADD COLUMN account TEXT NOT NULL DEFAULT ''";

// By rank and without an index, so that whoever reads the pages of a damaged database takes none of its pages for one of the jobs' or of
// their index.
constexpr const char* tableOfKept = R"sql(
CREATE TABLE IF NOT EXISTS kept (rank INTEGER PRIMARY KEY, attempts INTEGER NOT NULL);
CREATE TRIGGER IF NOT EXISTS keptNoMore AFTER DELETE ON job BEGIN DELETE FROM kept WHERE rank = old.rank; END;
)sql";

// Another process may have taken the step since: the number is read again inside the transaction.
void take(SQLite::Database& database, std::size_t step, const char* words)
{
    SQLite::Transaction transaction(database, SQLite::TransactionBehavior::IMMEDIATE);
    if (stepsSeenBy(database) != step)
        return;
    database.exec(words);
    database.exec("PRAGMA user_version = " + std::to_string(step + 1));
    transaction.commit();
}

/// The columns of the jobs, what is unique about them, and whether ranks are never used twice.
std::string describe(SQLite::Database& database)
{
    return database
        .execAndGet(R"sql(
SELECT coalesce(group_concat(line, char(10)), '') FROM (
    SELECT name || ' ' || type || ' ' || "notnull" || ' ' || coalesce(dflt_value, '-') || ' ' || pk || ' ' || hidden AS line
    FROM pragma_table_xinfo('job')
    UNION ALL
    SELECT 'unique ' || group_concat(part.name) FROM pragma_index_list('job') AS list, pragma_index_info(list.name) AS part
    WHERE list."unique" GROUP BY list.name
    UNION ALL
    SELECT name FROM sqlite_master WHERE name = 'sqlite_sequence')
)sql")
        .getString();
}

} // namespace

std::size_t stepsSeenBy(SQLite::Database& database)
{
    return static_cast<std::size_t>(database.execAndGet("PRAGMA user_version").getUInt());
}

void migrate(SQLite::Database& database, const std::vector<const char*>& steps)
{
    const std::size_t seen = stepsSeenBy(database);
    if (seen > steps.size())
        throw std::runtime_error("it was written by a newer version of this library");
    for (std::size_t step = seen; step < steps.size(); ++step)
        take(database, step, steps[step]);
}

bool hasSchema(SQLite::Database& database, const std::vector<const char*>& steps)
{
    const std::size_t seen = stepsSeenBy(database);
    if (seen > steps.size())
        return true;
    if (seen == 0)
        return database.execAndGet("SELECT count(*) FROM sqlite_master").getInt() == 0;
    SQLite::Database made(":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    migrate(made, {steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(seen)});
    return describe(database) == describe(made);
}

void addTableOfKept(SQLite::Database& database)
{
    database.exec(tableOfKept);
}

bool hasTableOfKept(SQLite::Database& database)
{
    return database.execAndGet("SELECT count(*) FROM pragma_table_info('kept') WHERE name IN ('rank', 'attempts')").getInt() == 2;
}

bool isTableOfKeptSound(SQLite::Database& database)
{
    return database.execAndGet("SELECT count(*) FROM sqlite_master WHERE type = 'trigger' AND name = 'keptNoMore'").getInt() == 0 ||
           hasTableOfKept(database);
}

const std::vector<const char*>& jobSchemaSteps()
{
    static const std::vector<const char*>& steps = utils::neverDestroyed(new std::vector<const char*>{firstSchema, accountColumn});
    return steps;
}

} // namespace orlo
