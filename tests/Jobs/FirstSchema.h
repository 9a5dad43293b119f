#pragma once

namespace orlo::test {

/// As the first version wrote it; later ones must read it for ever.
constexpr const char* firstSchema = R"sql(
CREATE TABLE job (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    typeKey TEXT NOT NULL,
    json TEXT NOT NULL,
    createTime INTEGER NOT NULL,
    jobType INTEGER NOT NULL);
PRAGMA user_version = 1;)sql";

} // namespace orlo::test
