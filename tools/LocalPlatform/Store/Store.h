#pragma once

#include <SQLiteCpp/SQLiteCpp.h>
#include <SQLiteCpp/VariadicBind.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orlo::platform {

/// The tables, as one transaction sees them.
///
/// A row reads as a JSON object whose keys are the names of the selected columns. A NULL column has no key. A name that ends in ":json" is
/// JSON already, one that ends in ":flag" is a boolean.
class Tables
{
public:
    explicit Tables(SQLite::Database& database) : m_database(database) {}

    /// Returns how many rows changed.
    template <typename... Values>
    int run(const std::string& sql, const Values&... values);
    /// A JSON array of all rows.
    template <typename... Values>
    std::string rows(const std::string& sql, const Values&... values);
    /// The first row, if there is one.
    template <typename... Values>
    std::optional<std::string> row(const std::string& sql, const Values&... values);
    /// The first column of all rows.
    template <typename... Values>
    std::vector<std::string> texts(const std::string& sql, const Values&... values);
    /// Calls `use(statement)` at each row.
    template <typename Use, typename... Values>
    void each(const Use& use, const std::string& sql, const Values&... values);
    /// The first column of the first row; a NULL counts as no value.
    template <typename... Values>
    std::optional<std::string> text(const std::string& sql, const Values&... values);
    template <typename... Values>
    std::optional<std::int64_t> integer(const std::string& sql, const Values&... values);

    std::int64_t lastRowId() const { return m_database.getLastInsertRowid(); }

private:
    template <typename... Values>
    SQLite::Statement statement(const std::string& sql, const Values&... values);
    static std::string rowObject(SQLite::Statement& statement);

    SQLite::Database& m_database;
};

/// The database. One transaction runs at a time.
class Store
{
public:
    /// file: UTF-8, or ":memory:". A file is locked against other processes as long as the store lives.
    explicit Store(const std::string& file);

    /// Runs `work(tables)` as one transaction and returns its result; an exception rolls back.
    template <typename Work>
    auto transact(const Work& work)
    {
        const std::lock_guard lock(m_mutex);
        SQLite::Transaction transaction(m_database);
        Tables tables(m_database);
        auto result = work(tables);
        transaction.commit();
        return result;
    }

private:
    SQLite::Database m_database;
    std::mutex m_mutex;
};

template <typename... Values>
SQLite::Statement Tables::statement(const std::string& sql, const Values&... values)
{
    SQLite::Statement result(m_database, sql);
    SQLite::bind(result, values...);
    return result;
}

template <typename... Values>
int Tables::run(const std::string& sql, const Values&... values)
{
    return statement(sql, values...).exec();
}

template <typename... Values>
std::string Tables::rows(const std::string& sql, const Values&... values)
{
    SQLite::Statement all = statement(sql, values...);
    std::string array;
    while (all.executeStep())
        array += (array.empty() ? "" : ",") + rowObject(all);
    return "[" + array + "]";
}

template <typename... Values>
std::optional<std::string> Tables::row(const std::string& sql, const Values&... values)
{
    SQLite::Statement first = statement(sql, values...);
    if (!first.executeStep())
        return std::nullopt;
    return rowObject(first);
}

template <typename... Values>
std::vector<std::string> Tables::texts(const std::string& sql, const Values&... values)
{
    SQLite::Statement all = statement(sql, values...);
    std::vector<std::string> result;
    while (all.executeStep())
        result.push_back(all.getColumn(0).getString());
    return result;
}

template <typename Use, typename... Values>
void Tables::each(const Use& use, const std::string& sql, const Values&... values)
{
    SQLite::Statement all = statement(sql, values...);
    while (all.executeStep())
        use(all);
}

template <typename... Values>
std::optional<std::string> Tables::text(const std::string& sql, const Values&... values)
{
    SQLite::Statement first = statement(sql, values...);
    if (!first.executeStep() || first.getColumn(0).isNull())
        return std::nullopt;
    return first.getColumn(0).getString();
}

template <typename... Values>
std::optional<std::int64_t> Tables::integer(const std::string& sql, const Values&... values)
{
    SQLite::Statement first = statement(sql, values...);
    if (!first.executeStep() || first.getColumn(0).isNull())
        return std::nullopt;
    return first.getColumn(0).getInt64();
}

} // namespace orlo::platform
