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
    EXPECT_EQ(version(), 1);
    EXPECT_TRUE(database.tableExists("job"));
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
