#include "Sql.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

namespace orlo::test {

std::vector<std::string> sqlTexts(const std::filesystem::path& database, const std::string& query)
{
    SQLite::Database opened(database.u8string(), SQLite::OPEN_READWRITE, 5000);
    SQLite::Statement statement(opened, query);
    std::vector<std::string> texts;
    while (statement.executeStep())
        texts.push_back(statement.getColumn(0).getString());
    return texts;
}

void sqlRun(const std::filesystem::path& database, const std::string& statements)
{
    SQLite::Database opened(database.u8string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, 5000);
    opened.exec(statements);
}

} // namespace orlo::test
