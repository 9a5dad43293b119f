#pragma once

#include <SQLiteCpp/Database.h>

#include <cstddef>
#include <vector>

namespace orlo {

/// How many steps the database has seen.
std::size_t stepsSeenBy(SQLite::Database& database);

/// Runs the steps that the database hasn't seen yet, each in a transaction of its own; `user_version` counts them. Throws if the database
/// has seen more steps than there are.
void migrate(SQLite::Database& database, const std::vector<const char*>& steps);

/// Whether the database holds what the steps it has seen lead to: nothing at all before the first. True where it has seen more steps than
/// there are, so that nothing is known of them.
bool hasSchema(SQLite::Database& database, const std::vector<const char*>& steps);

/// Makes the table of those that were kept, if there is none: how many runs of a job have failed. It is no step, since a host that keeps no
/// job has none, and earlier versions open the database with it. A row goes with that of its job.
void addTableOfKept(SQLite::Database& database);
/// Whether it is there; a table of somebody else's with its name isn't it.
bool hasTableOfKept(SQLite::Database& database);
/// Whether rows of jobs can be dropped: what goes along with them is there, if anything is to.
bool isTableOfKeptSound(SQLite::Database& database);

/// The steps that lead to the schema of the job database.
const std::vector<const char*>& jobSchemaSteps();

} // namespace orlo
