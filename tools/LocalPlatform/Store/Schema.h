#pragma once

#include <SQLiteCpp/Database.h>

namespace orlo::platform {

/// Brings the database to the newest schema, step by step from the one that its `user_version` tells. Throws if the data is newer than this
/// program.
void migrate(SQLite::Database& database);

} // namespace orlo::platform
