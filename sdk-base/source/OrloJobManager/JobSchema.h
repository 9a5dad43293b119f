#pragma once

#include <SQLiteCpp/Database.h>

#include <vector>

namespace orlo {

/// Runs the steps that the database hasn't seen yet, each in a transaction of its own; `user_version` counts them. Throws if the database
/// has seen more steps than there are.
void migrate(SQLite::Database& database, const std::vector<const char*>& steps);

/// The steps that lead to the schema of the job database.
const std::vector<const char*>& jobSchemaSteps();

} // namespace orlo
