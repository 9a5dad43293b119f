#include "Store.h"

#include "Json.h"
#include "Schema.h"

#include <array>
#include <cstdio>

namespace orlo::platform {

namespace {

std::string realText(double value)
{
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.17g", value);
    return text.data();
}

bool takeSuffix(std::string& name, const std::string& suffix)
{
    if (name.size() < suffix.size() || name.compare(name.size() - suffix.size(), suffix.size(), suffix) != 0)
        return false;
    name.resize(name.size() - suffix.size());
    return true;
}

void addMember(json::Object& object, std::string name, const SQLite::Column& column)
{
    if (takeSuffix(name, ":json"))
        object.raw(name, column.getString());
    else if (takeSuffix(name, ":flag"))
        object.flag(name, column.getInt64() != 0);
    else if (column.isInteger())
        object.number(name, column.getInt64());
    else if (column.isFloat())
        object.raw(name, realText(column.getDouble()));
    else
        object.text(name, column.getString());
}

} // namespace

std::string Tables::rowObject(SQLite::Statement& statement)
{
    json::Object object;
    for (int i = 0; i < statement.getColumnCount(); ++i) {
        const SQLite::Column column = statement.getColumn(i);
        if (!column.isNull())
            addMember(object, statement.getColumnName(i), column);
    }
    return object.str();
}

Store::Store(const std::string& file) : m_database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
{
    // A second platform on the same data would hand out the same version numbers.
    m_database.exec("PRAGMA locking_mode = EXCLUSIVE");
    m_database.exec("PRAGMA journal_mode = WAL");
    m_database.exec("PRAGMA synchronous = NORMAL");
    m_database.exec("PRAGMA foreign_keys = ON");
    migrate(m_database);
}

} // namespace orlo::platform
