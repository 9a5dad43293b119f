#include "JobSchema.h"

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

const std::vector<const char*>& jobSchemaSteps()
{
    static const std::vector<const char*>& steps = *new std::vector<const char*>{firstSchema, accountColumn};
    return steps;
}

} // namespace orlo
