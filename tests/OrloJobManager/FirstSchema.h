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

/// With the account of whoever handed the job over.
constexpr const char* secondSchema = R"sql(
CREATE TABLE job (
    rank INTEGER PRIMARY KEY AUTOINCREMENT,
    id TEXT NOT NULL UNIQUE,
    typeKey TEXT NOT NULL,
    json TEXT NOT NULL,
    createTime INTEGER NOT NULL,
    jobType INTEGER NOT NULL, account TEXT NOT NULL DEFAULT '');
PRAGMA user_version = 2;)sql";

} // namespace orlo::test
