#include "JobSalvage.h"

#include "JobPages.h"

#include <BaseCommon/JsonWrapper.h>
#include <BaseCommon/Text.h>

#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>

#include <map>
#include <unordered_set>
#include <utility>

namespace orlo {

namespace {

constexpr const char* soundRow = R"sql(
SELECT rowid, id, typeKey, json, createTime, jobType, coalesce(account, '') FROM leaf
WHERE rowid = ? AND vacant IS NULL AND typeof(id) = 'text' AND typeof(typeKey) = 'text' AND typeof(json) = 'text'
AND typeof(createTime) = 'integer' AND typeof(jobType) = 'integer' AND typeof(account) IN ('text', 'null') AND beyond IS NULL
)sql";

bool isSoundText(const std::string& text)
{
    return text.find('\0') == std::string::npos && utils::isValidUtf8(text);
}

bool isSound(const JobRow& row)
{
    return isSoundText(row.id) && isSoundText(row.typeKey) && isSoundText(row.json) && isSoundText(row.account) &&
           JsonWrapper().Parse(row.json);
}

/// Takes the pages of a copy one by one.
class PageReader
{
public:
    explicit PageReader(const JobPagesCopy& copy) : m_database(copy.path(), SQLite::OPEN_READWRITE), m_patience(copy.size() / 4)
    {
        m_database.exec("PRAGMA journal_mode = OFF");
        m_database.exec("PRAGMA synchronous = OFF");
        sqlite3_db_config(m_database.getHandle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    }

    void read(const JobPages& pages);
    Salvage result() const;

private:
    void readLeaf(std::int64_t page);
    void readIndex(std::int64_t page);
    void readRow(std::int64_t rank);
    void show(const char* table, std::int64_t page);
    std::vector<std::int64_t> collect(const char* query);

    SQLite::Database m_database;
    /// Branches of a damaged index may lead round and round.
    std::uintmax_t m_patience;
    std::map<std::int64_t, JobRow> m_rows;
    std::unordered_set<std::string> m_ids;
    std::unordered_set<std::int64_t> m_ranksOfIndex;
};

void PageReader::read(const JobPages& pages)
{
    for (const std::int64_t page : pages.leaves)
        readLeaf(page);
    for (const std::int64_t page : pages.index)
        readIndex(page);
}

void PageReader::show(const char* table, std::int64_t page)
{
    m_database.exec("PRAGMA writable_schema = ON");
    SQLite::Statement statement(m_database, "UPDATE sqlite_master SET rootpage = ? WHERE name = ?");
    statement.bind(1, page);
    statement.bind(2, table);
    statement.exec();
    // Reads the schema anew.
    m_database.exec("PRAGMA writable_schema = RESET");
}

/// The numbers in front of the damage, if there is any.
std::vector<std::int64_t> PageReader::collect(const char* query)
{
    std::vector<std::int64_t> numbers;
    try {
        SQLite::Statement statement(m_database, query);
        while (m_patience > 0 && statement.executeStep()) {
            --m_patience;
            if (statement.getColumn(0).isInteger())
                numbers.push_back(statement.getColumn(0).getInt64());
        }
    }
    catch (const SQLite::Exception& thrown) {
        passOverDamage(thrown);
    }
    return numbers;
}

void PageReader::readLeaf(std::int64_t page)
{
    show("leaf", page);
    for (const std::int64_t rank : collect("SELECT rowid FROM leaf"))
        readRow(rank);
}

// A row may be damaged where its neighbours aren't. It counts as lost where the index names it.
void PageReader::readRow(std::int64_t rank)
{
    try {
        SQLite::Statement statement(m_database, soundRow);
        statement.bind(1, rank);
        if (!statement.executeStep())
            return;
        JobRow row = jobRowFrom(statement);
        if (isSound(row) && m_rows.count(rank) == 0 && m_ids.insert(row.id).second)
            m_rows.emplace(rank, std::move(row));
    }
    catch (const SQLite::Exception& thrown) {
        passOverDamage(thrown);
    }
}

void PageReader::readIndex(std::int64_t page)
{
    show("entry", page);
    const std::vector<std::int64_t> ranks = collect("SELECT rank FROM entry");
    m_ranksOfIndex.insert(ranks.begin(), ranks.end());
}

Salvage PageReader::result() const
{
    Salvage salvage;
    for (const auto& [rank, row] : m_rows)
        salvage.rows.push_back(row);
    if (m_ranksOfIndex.empty())
        return salvage;
    salvage.lost = 0;
    for (const std::int64_t rank : m_ranksOfIndex)
        *salvage.lost += 1 - m_rows.count(rank);
    return salvage;
}

} // namespace

Salvage salvageJobs(const std::wstring& path)
{
    const JobPagesCopy copy(path);
    PageReader reader(copy);
    reader.read(copy.pages());
    return reader.result();
}

} // namespace orlo
