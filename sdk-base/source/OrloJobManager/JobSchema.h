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

/// The steps that lead to the schema of the job database.
const std::vector<const char*>& jobSchemaSteps();

} // namespace orlo
