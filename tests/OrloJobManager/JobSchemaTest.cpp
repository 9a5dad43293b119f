#include "FirstSchema.h"

#include <OrloJobManager/JobSchema.h>

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <stdexcept>

namespace orlo::test {
namespace {

class JobSchema : public testing::Test
{
protected:
    int version() { return database.execAndGet("PRAGMA user_version").getInt(); }

    SQLite::Database database{":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE};
    const char* const first = "CREATE TABLE wall (height INTEGER); INSERT INTO wall VALUES (3)";
    const char* const second = "ALTER TABLE wall ADD COLUMN width INTEGER NOT NULL DEFAULT 7";
    const char* const broken = "INSERT INTO wall VALUES (4); INSERT INTO roof VALUES (1)";
};

TEST_F(JobSchema, aNewDatabaseTakesAllSteps)
{
    migrate(database, jobSchemaSteps());
    EXPECT_EQ(version(), 2);
    EXPECT_TRUE(database.tableExists("job"));
}

TEST_F(JobSchema, jobsOfTheFirstSchemaGetAnAccountAndKeepTheRest)
{
    database.exec(firstSchema);
    database.exec("INSERT INTO job VALUES (7, 'id7', 'test job', '{\"a\":1}', 1234567890123, 2), (9, 'id9', 'odd', '', 0, -1)");
    migrate(database, jobSchemaSteps());
    EXPECT_EQ(version(), 2);
    SQLite::Statement rows(database, "SELECT * FROM job ORDER BY rank");
    ASSERT_EQ(rows.getColumnCount(), 7);
    EXPECT_STREQ(rows.getColumnName(6), "account");
    for (const char* row : {"7|id7|test job|{\"a\":1}|1234567890123|2|", "9|id9|odd||0|-1|"}) {
        ASSERT_TRUE(rows.executeStep());
        std::string text = rows.getColumn(0).getString();
        for (int column = 1; column < 7; ++column)
            text += "|" + rows.getColumn(column).getString();
        EXPECT_EQ(text, row);
    }
    // Ranks go on where they were.
    database.exec("INSERT INTO job (id, typeKey, json, createTime, jobType, account) VALUES ('new', '', '', 0, 0, 'a')");
    EXPECT_EQ(database.execAndGet("SELECT rank FROM job WHERE account = 'a'").getInt(), 10);
}

TEST_F(JobSchema, anOlderDatabaseTakesTheStepsItLacksAndKeepsItsRows)
{
    migrate(database, {first});
    EXPECT_EQ(version(), 1);
    migrate(database, {first, second});
    EXPECT_EQ(version(), 2);
    EXPECT_EQ(database.execAndGet("SELECT height * 10 + width FROM wall").getInt(), 37);
}

TEST_F(JobSchema, noStepIsTakenTwice)
{
    migrate(database, {first, second});
    migrate(database, {first, second});
    EXPECT_EQ(database.execAndGet("SELECT count(*) FROM wall").getInt(), 1);
}

TEST_F(JobSchema, aStepThatFailsLeavesNothing)
{
    EXPECT_THROW(migrate(database, {first, broken}), SQLite::Exception);
    EXPECT_EQ(version(), 1);
    EXPECT_EQ(database.execAndGet("SELECT count(*) FROM wall").getInt(), 1);
}

TEST_F(JobSchema, aNewerDatabaseIsRefused)
{
    migrate(database, {first, second});
    EXPECT_THROW(migrate(database, {first}), std::runtime_error);
    EXPECT_EQ(version(), 2);
}

} // namespace
} // namespace orlo::test
