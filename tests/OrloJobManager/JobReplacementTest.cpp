#include "DamagedJobs.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"

#include <SQLiteCpp/Database.h>

#include <algorithm>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// How a new database comes into the place of one that is no good.
class JobReplacement : public DamagedJobs
{
protected:
    /// Jobs without a head: all of them can be read.
    void fillDamaged(int jobs = 200) const
    {
        fill(jobs);
        std::string bytes = readFile(database());
        bytes.replace(0, 16, std::string(16, '\0'));
        writeFile(database(), bytes);
    }

    void makeCopy(const std::string& name) const
    {
        fs::create_directories(jobsFolder() / name);
        writeFile(jobsFolder() / name / "plan.model", "bytes");
    }

    /// A job can be saved, is run, and the other one is where it was set aside.
    void expectToWork(const std::wstring& reason)
    {
        ASSERT_TRUE(IJobManager::Start({}));
        submit("roof");
        ASSERT_TRUE(becomesIdle());
        EXPECT_THAT(TestJob::ran(), ElementsAre("roof"));
        expectLines(reason, 0, L"; how many more it held can't be told");
    }

    static constexpr const wchar_t* foreign = L"its tables aren't those of a job database";
    static constexpr const wchar_t* orphans = L"E [ORLOSDK]copies of files beside the job database that no job names any more: ";
};

TEST_F(JobReplacement, anEmptyFileWithoutCopiesIsANewDatabase)
{
    writeFile(database(), "");
    fs::create_directories(jobsFolder() / "7f0c4a52" / "1c6a0a5e-5f0e-4b8e-9d3e-000000000001");
    makeCopy("not a job's");
    saved("roof");
    EXPECT_THAT(rows(), ElementsAre("roof"));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_FALSE(fs::exists(aside()));
}

TEST_F(JobReplacement, anEmptyFileBesideCopiesIsSetAside)
{
    writeFile(database(), "");
    makeCopy("7f0c4a52/1c6a0a5e-5f0e-4b8e-9d3e-000000000001");
    makeCopy("7f0c4a52-5f0e-4b8e-9d3e-6d8d4b0f6a11/1c6a0a5e-5f0e-4b8e-9d3e-000000000002");
    makeCopy("1c6a0a5e-5f0e-4b8e-9d3e-000000000003");
    saved("roof");
    EXPECT_THAT(rows(), ElementsAre("roof"));
    EXPECT_EQ(readFile(aside()), "");
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]the job database is damaged: it is empty; it was set aside as " +
                                             folder.wide("Jobs/jobs.db.damaged-1"),
                                         L"E [ORLOSDK]jobs read from the damaged database: 0; how many more it held can't be told",
                                         std::wstring(orphans) + L"3"));
}

TEST_F(JobReplacement, theCopiesThatNoJobNamesAreCounted)
{
    sqlRun(database(), secondSchema);
    sqlRun(database(), R"sql(INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES ('id', 'test job',
'{"jobId":"id","path":"/home/somebody/Jobs/7f0c4a52/1c6a0a5e-5f0e-4b8e-9d3e-000000000001/plan.model"}', 1, 2))sql");
    std::string bytes = readFile(database());
    bytes.replace(0, 16, std::string(16, '\0'));
    writeFile(database(), bytes);
    makeCopy("7f0c4a52/1c6a0a5e-5f0e-4b8e-9d3e-000000000001");
    makeCopy("7f0c4a52/1c6a0a5e-5f0e-4b8e-9d3e-000000000002");
    EXPECT_TRUE(opens());
    EXPECT_TRUE(log.has(L"E [ORLOSDK]jobs read from the damaged database: 1; known to be lost: 0"));
    EXPECT_TRUE(log.has(std::wstring(orphans) + L"1"));
}

TEST_F(JobReplacement, aFileThatIsNoDatabaseBesideCopiesIsToldWithThem)
{
    writeFile(database(), std::string(20000, 'x'));
    makeCopy("7f0c4a52/1c6a0a5e-5f0e-4b8e-9d3e-000000000001");
    EXPECT_TRUE(opens());
    EXPECT_THAT(log.lines(), SizeIs(3));
    EXPECT_TRUE(log.has(std::wstring(orphans) + L"1"));
}

TEST_F(JobReplacement, aForeignTableOfTheSameNameIsSetAside)
{
    sqlRun(database(), "CREATE TABLE job (words TEXT); INSERT INTO job VALUES ('x'); PRAGMA user_version = 1");
    expectToWork(foreign);
    EXPECT_THAT(sqlTexts(aside(), "SELECT words FROM job"), ElementsAre("x"));
}

TEST_F(JobReplacement, aForeignTableWithoutAVersionIsSetAside)
{
    sqlRun(database(), "CREATE TABLE job (words TEXT)");
    expectToWork(foreign);
}

TEST_F(JobReplacement, aDatabaseOfAnotherProgramIsSetAside)
{
    sqlRun(database(), "CREATE TABLE note (words TEXT)");
    expectToWork(foreign);
}

TEST_F(JobReplacement, aTableThatLacksWhatItsVersionSaysIsSetAside)
{
    sqlRun(database(), firstSchema);
    sqlRun(database(), "PRAGMA user_version = 2");
    expectToWork(foreign);
}

TEST_F(JobReplacement, aTableWithMoreThanItsVersionSaysIsSetAside)
{
    sqlRun(database(), secondSchema);
    sqlRun(database(), "ALTER TABLE job ADD COLUMN colour TEXT");
    expectToWork(foreign);
}

TEST_F(JobReplacement, aTableWhoseIdsAreNotUniqueIsSetAside)
{
    sqlRun(database(), "CREATE TABLE job (rank INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL, typeKey TEXT NOT NULL, "
                       "json TEXT NOT NULL, createTime INTEGER NOT NULL, jobType INTEGER NOT NULL); PRAGMA user_version = 1");
    expectToWork(foreign);
}

TEST_F(JobReplacement, aViewInPlaceOfTheTableIsSetAside)
{
    sqlRun(database(), "CREATE VIEW job AS SELECT 1 AS rank, 'id' AS id, 'test job' AS typeKey, '{}' AS json, 1 AS createTime, "
                       "2 AS jobType; PRAGMA user_version = 1");
    expectToWork(foreign);
}

TEST_F(JobReplacement, tablesThatChangeAtWorkAreSetAsideToo)
{
    ASSERT_TRUE(IJobManager::Start({}));
    submit("first");
    ASSERT_TRUE(becomesIdle());
    sqlRun(database(), "DROP TABLE job; CREATE TABLE job (words TEXT)");
    submit("second");
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "second"));
    expectLines(foreign, 0, L"; how many more it held can't be told");
}

/// A few jobs, some of them in the database and some, if there is one, in its log.
class FailingReplacement : public JobReplacement, public testing::WithParamInterface<bool>
{
protected:
    void SetUp() override
    {
        fill(20);
        SQLite::Database other(database().u8string(), SQLite::OPEN_READWRITE);
        if (GetParam())
            other.exec("PRAGMA journal_mode = WAL");
        other.exec(insertion(21, 30));
        damaged = readFile(database());
        const std::size_t page = damaged.find("\"name\":\"job 5 ") / pageSize * pageSize;
        all = rowsOutside(wholeRows(), damaged, page, page + pageSize);
        ASSERT_GT(all.size(), 20u);
        damaged.replace(page, pageSize, std::string(pageSize, '\0'));
        logged = GetParam() ? readFile(logFile()) : "";
    }

    void damageAnew()
    {
        forgetDamage();
        writeFile(database(), damaged);
        if (GetParam())
            writeFile(logFile(), logged);
        closeDatabase();
    }

    Names all;
    std::string damaged;
    std::string logged;
};

INSTANTIATE_TEST_SUITE_P(JobReplacement, FailingReplacement, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "with_a_log" : "without_a_log"; });

TEST_P(FailingReplacement, losesNoJobWheneverTheDiskIsFull)
{
    FaultyFiles files;
    bool isOpened = false;
    int step = 0;
    while (!isOpened && step < 300) {
        SCOPED_TRACE(step += 2);
        damageAnew();
        files.reset();
        files.fillDiskAt(step);
        isOpened = opens();
        files.reset();
        EXPECT_TRUE(opens());
        EXPECT_EQ(wholeRows(), all);
        EXPECT_FALSE(fs::exists(aside(2)));
    }
    EXPECT_TRUE(isOpened);
    EXPECT_GT(step, 10);
}

TEST_P(FailingReplacement, losesNoJobWheneverTheProcessDies)
{
    bool isOver = false;
    int step = 0;
    while (!isOver && step < 300) {
        SCOPED_TRACE(step += 2);
        damageAnew();
        ChildProcess host({JOB_PROCESS, folder.path().string()});
        host.ask("die-at-step " + std::to_string(step));
        host.ask("save roof");
        host.tell("leave");
        isOver = host.wait() == 0;
        EXPECT_TRUE(opens());
        Names rows = wholeRows();
        rows.resize(std::min(rows.size(), all.size()));
        EXPECT_EQ(rows, all);
        EXPECT_FALSE(fs::exists(aside(2)));
    }
    EXPECT_TRUE(isOver);
    EXPECT_GT(step, 10);
}

/// A change that a process left behind where it died between two steps.
class BegunReplacement : public JobReplacement
{
protected:
    void SetUp() override
    {
        fill();
        all = wholeRows();
        forgetDamage();
        fillDamaged();
        writeFile(jobsFolder() / "jobs.db.replacing", "jobs.db.damaged-7");
    }

    void expectAll(const std::wstring& firstLine)
    {
        EXPECT_TRUE(opens());
        EXPECT_EQ(wholeRows(), all);
        EXPECT_TRUE(fs::exists(aside(7)));
        EXPECT_FALSE(fs::exists(jobsFolder() / "jobs.db.replacing"));
        EXPECT_EQ(log.lines().front(), firstLine);
    }

    Names all;
    const std::wstring line = L"E [ORLOSDK]the job database is damaged: its replacement was begun and not ended; it was set aside as " +
                              folder.wide("Jobs/jobs.db.damaged-7");
};

TEST_F(BegunReplacement, beforeAnythingWasMovedIsEnded)
{
    expectAll(line);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]jobs read from the damaged database: 200; known to be lost: 0"));
}

TEST_F(BegunReplacement, withHalfOfTheFilesMovedIsEnded)
{
    writeFile(aside(7).u8string() + "-wal", "");
    writeFile(jobsFolder() / "jobs.db-journal", "of the damaged one");
    expectAll(line);
    EXPECT_EQ(readFile(aside(7).u8string() + "-journal"), "of the damaged one");
}

TEST_F(BegunReplacement, withoutANewDatabaseIsEnded)
{
    fs::rename(database(), aside(7));
    writeFile(jobsFolder() / "jobs.db.new", "half of it");
    writeFile(jobsFolder() / "jobs.db.damaged-7.reading", "half of it");
    expectAll(line);
    EXPECT_FALSE(fs::exists(jobsFolder() / "jobs.db.new"));
    EXPECT_FALSE(fs::exists(aside(7).u8string() + ".reading"));
}

TEST_F(BegunReplacement, withTheNewDatabaseInItsPlaceIsEnded)
{
    fs::rename(database(), aside(7));
    fill();
    expectAll(line);
    EXPECT_THAT(log.lines(), SizeIs(1));
}

TEST_F(BegunReplacement, whoseNoteIsNoneOfOursIsForgotten)
{
    writeFile(jobsFolder() / "jobs.db.replacing", "../../jobs.db.damaged-1");
    EXPECT_TRUE(opens());
    EXPECT_EQ(wholeRows(), all);
    expectLines(L"file is not a database", 200, L"; known to be lost: 0");
}

} // namespace
} // namespace orlo::test
