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
    template <class... Values>
    int run(const std::string& sql, const Values&... values);
    /// A JSON array of all rows.
    template <class... Values>
    std::string rows(const std::string& sql, const Values&... values);
    /// The first row, if there is one.
    template <class... Values>
    std::optional<std::string> row(const std::string& sql, const Values&... values);
    /// The first column of all rows.
    template <class... Values>
    std::vector<std::string> texts(const std::string& sql, const Values&... values);
    /// Calls `use(statement)` at each row.
    template <class Use, class... Values>
    void each(const Use& use, const std::string& sql, const Values&... values);
    /// The first column of the first row; a NULL counts as no value.
    template <class... Values>
    std::optional<std::string> text(const std::string& sql, const Values&... values);
    template <class... Values>
    std::optional<std::int64_t> integer(const std::string& sql, const Values&... values);

    std::int64_t lastRowId() const { return m_database.getLastInsertRowid(); }

private:
    template <class... Values>
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
    template <class Work>
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

template <class... Values>
SQLite::Statement Tables::statement(const std::string& sql, const Values&... values)
{
    SQLite::Statement result(m_database, sql);
    SQLite::bind(result, values...);
    return result;
}

template <class... Values>
int Tables::run(const std::string& sql, const Values&... values)
{
    return statement(sql, values...).exec();
}

template <class... Values>
std::string Tables::rows(const std::string& sql, const Values&... values)
{
    SQLite::Statement all = statement(sql, values...);
    std::string array;
    while (all.executeStep())
        array += (array.empty() ? "" : ",") + rowObject(all);
    return "[" + array + "]";
}

template <class... Values>
std::optional<std::string> Tables::row(const std::string& sql, const Values&... values)
{
    SQLite::Statement first = statement(sql, values...);
    if (!first.executeStep())
        return std::nullopt;
    return rowObject(first);
}

template <class... Values>
std::vector<std::string> Tables::texts(const std::string& sql, const Values&... values)
{
    SQLite::Statement all = statement(sql, values...);
    std::vector<std::string> result;
    while (all.executeStep())
        result.push_back(all.getColumn(0).getString());
    return result;
}

template <class Use, class... Values>
void Tables::each(const Use& use, const std::string& sql, const Values&... values)
{
    SQLite::Statement all = statement(sql, values...);
    while (all.executeStep())
        use(all);
}

template <class... Values>
std::optional<std::string> Tables::text(const std::string& sql, const Values&... values)
{
    SQLite::Statement first = statement(sql, values...);
    if (!first.executeStep() || first.getColumn(0).isNull())
        return std::nullopt;
    return first.getColumn(0).getString();
}

template <class... Values>
std::optional<std::int64_t> Tables::integer(const std::string& sql, const Values&... values)
{
    SQLite::Statement first = statement(sql, values...);
    if (!first.executeStep() || first.getColumn(0).isNull())
        return std::nullopt;
    return first.getColumn(0).getInt64();
}

} // namespace orlo::platform
