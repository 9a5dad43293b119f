#include "FirstSchema.h"
#include "JobsTest.h"
#include "support/SilentLog.h"
#include "support/Threads.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>

#include <SQLiteCpp/Database.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class JobDatabase : public JobsTest
{
protected:
    fs::path aside(int number = 1) const { return jobsFolder() / ("jobs.db.damaged-" + std::to_string(number)); }

    /// Runs what the rows hold and stops again.
    void runAll()
    {
        ASSERT_TRUE(IJobManager::Start(workers(1)));
        ASSERT_TRUE(becomesIdle());
        ASSERT_TRUE(IJobManager::Stop());
    }
};

TEST_F(JobDatabase, aRowHoldsWhatTheJobTells)
{
    const auto job = saved("roof", 1234567890123);
    const std::string id = job->JobId();
    EXPECT_THAT(sqlTexts(database(), "SELECT id || '|' || typeKey || '|' || json || '|' || createTime || '|' || jobType FROM job"),
                ElementsAre(id + "|test job|{\"jobId\":\"" + id + "\",\"createTime\":1234567890123,\"name\":\"roof\"}|1234567890123|2"));
}

TEST_F(JobDatabase, anIdAndAJsonMayHoldAnyBytes)
{
    class Odd : public TestJob
    {
    public:
        Odd() { m_jobId = "it's \"odd\""; }
        std::string ToJson() const override { return std::string("a\0b", 3) + "\xff"; }
    };
    Odd job;
    ASSERT_TRUE(job.save());
    EXPECT_THAT(sqlTexts(database(), "SELECT hex(id) FROM job"), ElementsAre("6974277320226F646422"));
    EXPECT_THAT(sqlTexts(database(), "SELECT json FROM job"), ElementsAre(std::string("a\0b", 3) + "\xff"));
    EXPECT_TRUE(job.remove());
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobDatabase, savingAgainReplacesTheRowAtItsPlace)
{
    const auto first = saved("first");
    saved("second");
    first->name = "first again";
    EXPECT_TRUE(first->save());
    EXPECT_THAT(rows(), ElementsAre("first again", "second"));
}

TEST_F(JobDatabase, removeDeletesOneRow)
{
    const auto first = saved("first");
    saved("second");
    EXPECT_TRUE(first->remove());
    EXPECT_THAT(rows(), ElementsAre("second"));
}

TEST_F(JobDatabase, removingAJobThatHasNoRowIsNoFailure)
{
    TestJob job("never saved");
    EXPECT_TRUE(job.remove());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(JobDatabase, aJobThatCannotTellItsTextIsNotSaved)
{
    class Mute : public TestJob
    {
    public:
        std::string ToJson() const override { throw std::runtime_error("no words"); }
    };
    Mute job;
    EXPECT_FALSE(job.save());
    EXPECT_THAT(log.lines(), ElementsAre(L"E@orlo::LocalDbJobEntity::save no words"));
}

TEST_F(JobDatabase, isTheOwnersAloneAndKeepsAWriteAheadLog)
{
    saved("roof");
    for (const char* name : {"jobs.db", "jobs.db-wal", "jobs.db-shm"})
        EXPECT_EQ(fs::status(jobsFolder() / name).permissions(), fs::perms::owner_read | fs::perms::owner_write) << name;
    EXPECT_THAT(sqlTexts(database(), "PRAGMA journal_mode"), ElementsAre("wal"));
    EXPECT_THAT(sqlTexts(database(), "PRAGMA user_version"), ElementsAre("2"));
}

TEST_F(JobDatabase, isOneFileAgainAfterStop)
{
    ASSERT_TRUE(IJobManager::Start({}));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    ASSERT_TRUE(IJobManager::Stop());
    EXPECT_FALSE(fs::exists(jobsFolder() / "jobs.db-wal"));
}

TEST_F(JobDatabase, jobsThatWereSavedWhileNoManagerRanAreRunByTheNext)
{
    saved("second", 2000);
    saved("first", 1000);
    runAll();
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "second"));
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobDatabase, aRebuiltJobIsWhatWasSaved)
{
    const auto job = saved("roof", 4711);
    const auto gate = holdJobs();
    ASSERT_TRUE(IJobManager::Start({}));
    const auto rebuilt = IJobManager::Get()->GetJob(job->JobId());
    ASSERT_NE(rebuilt, nullptr);
    EXPECT_NE(rebuilt, job);
    EXPECT_EQ(rebuilt->GetCreateTime(), 4711);
    EXPECT_EQ(rebuilt->GetType(), JobType::UploadFile);
    EXPECT_EQ(rebuilt->ToJson(), job->ToJson());
    gate->open();
}

TEST_F(JobDatabase, rowsOfEqualTimeKeepTheirOrderOverARestart)
{
    for (const char* name : {"a", "b", "c", "d"})
        saved(name);
    runAll();
    EXPECT_THAT(TestJob::ran(), ElementsAre("a", "b", "c", "d"));
}

TEST_F(JobDatabase, aRowOfAnUnknownTypeStaysAndHoldsNobodyUp)
{
    saved("first");
    const auto foreign = saved("foreign");
    saved("last");
    sqlRun(database(), "UPDATE job SET typeKey = 'of another program' WHERE id = '" + foreign->JobId() + "'");
    runAll();
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "last"));
    EXPECT_THAT(rows(), ElementsAre("foreign"));
    EXPECT_EQ(log.count(L"E [ORLOSDK]the row of job " + utils::toWstring(foreign->JobId()) + L" is left alone: its type is unknown"), 1u);
    runAll();
    EXPECT_THAT(rows(), ElementsAre("foreign"));
}

TEST_F(JobDatabase, aRowOfAnUnknownTypeIsToldOfOnceHoweverOftenTheRowsAreRead)
{
    const auto foreign = saved("foreign");
    sqlRun(database(), "UPDATE job SET typeKey = 'of another program'");
    ASSERT_TRUE(IJobManager::Start({}));
    // Written by another connection, as by another process: the rows are read anew.
    TestJob other("other");
    sqlRun(database(), "INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES ('" + other.JobId() + "', 'test job', '" +
                           other.ToJson() + "', 1, 2)");
    ASSERT_TRUE(waitUntil([] { return TestJob::ranCount() == 1; }));
    EXPECT_EQ(log.count(L"E [ORLOSDK]the row of job " + utils::toWstring(foreign->JobId()) + L" is left alone: its type is unknown"), 1u);
}

TEST_F(JobDatabase, aRowWithBrokenJsonStaysAndHoldsNobodyUp)
{
    saved("first");
    const auto broken = saved("broken");
    saved("last");
    sqlRun(database(), "UPDATE job SET json = '{\"jobId\":' WHERE id = '" + broken->JobId() + "'");
    runAll();
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "last"));
    EXPECT_THAT(sqlTexts(database(), "SELECT json FROM job"), ElementsAre("{\"jobId\":"));
    EXPECT_EQ(log.count(L"E [ORLOSDK]the row of job " + utils::toWstring(broken->JobId()) + L" is left alone: it can't be read"), 1u);
}

TEST_F(JobDatabase, aRowWhoseJsonNamesAnotherJobStays)
{
    const auto job = saved("roof");
    sqlRun(database(), "UPDATE job SET id = 'another id'");
    runAll();
    EXPECT_THAT(TestJob::ran(), IsEmpty());
    EXPECT_TRUE(log.has(L"E [ORLOSDK]the row of job another id is left alone: it can't be read"));
    EXPECT_THAT(rows(), ElementsAre("roof"));
}

TEST_F(JobDatabase, aRowWhoseClassThrowsStays)
{
    class Thrower : public TestJob
    {
    public:
        bool LoadFromJson(const std::string&) override { throw std::runtime_error("no way"); }
        std::string GetJobTypeKey() const override { return "thrower"; }
    };
    const JobEntityRegistration registration("thrower", [] { return std::make_shared<Thrower>(); });
    Thrower job;
    ASSERT_TRUE(job.save());
    saved("last");
    runAll();
    EXPECT_THAT(TestJob::ran(), ElementsAre("last"));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]the row of job " + utils::toWstring(job.JobId()) + L" is left alone: no way"));
    EXPECT_THAT(rows(), SizeIs(1));
}

TEST_F(JobDatabase, aFileThatIsNoDatabaseIsSetAsideAsItIs)
{
    const std::string garbage(5000, 'x');
    fs::create_directories(jobsFolder());
    writeFile(database(), garbage);
    ASSERT_TRUE(IJobManager::Start({}));
    submit("roof");
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(TestJob::ran(), ElementsAre("roof"));
    EXPECT_EQ(readFile(aside()), garbage);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]the job database is damaged: file is not a database; it was set aside as " +
                        folder.wide("Jobs/jobs.db.damaged-1")));
}

TEST_F(JobDatabase, whatWasSetAsideBeforeIsNotOverwritten)
{
    fs::create_directories(jobsFolder());
    writeFile(database(), std::string(5000, 'x'));
    saved("roof");
    ASSERT_TRUE(IJobManager::Start({}));
    ASSERT_TRUE(IJobManager::Stop());
    writeFile(database(), std::string(5000, 'y'));
    saved("wall");
    EXPECT_EQ(readFile(aside(1)), std::string(5000, 'x'));
    EXPECT_EQ(readFile(aside(2)), std::string(5000, 'y'));
}

TEST_F(JobDatabase, theRowsBesideTheDamageAreKept)
{
    fs::create_directories(jobsFolder());
    sqlRun(database(), firstSchema);
    sqlRun(database(), R"sql(
WITH RECURSIVE counted(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM counted WHERE n < 400)
INSERT INTO job (id, typeKey, json, createTime, jobType)
SELECT 'id' || n, 'test job', '{"jobId":"id' || n || '","createTime":' || n || ',"name":"job ' || n || '"}', n, 2 FROM counted;)sql");
    std::string bytes = readFile(database());
    const std::size_t page = bytes.find("\"name\":\"job 200\"") / 4096;
    bytes.replace(page * 4096, 4096, std::string(4096, '\xee'));
    writeFile(database(), bytes);
    runAll();
    EXPECT_EQ(readFile(aside()), bytes);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]the job database is damaged: *** in database main *** Page " + std::to_wstring(page + 1) +
                        L": btreeInitPage() returns error code 11; it was set aside as " + folder.wide("Jobs/jobs.db.damaged-1")));
    const Names ran = TestJob::ran();
    EXPECT_GT(ran.size(), 300u);
    EXPECT_THAT(ran, Contains("job 1"));
    EXPECT_THAT(ran, Not(Contains("job 200")));
    EXPECT_THAT(ran, Contains("job 400"));
    EXPECT_TRUE(log.has(L"E [ORLOSDK]jobs read from the damaged database: " + std::to_wstring(ran.size()) + L"; known to be lost: " +
                        std::to_wstring(400 - ran.size())));
}

TEST_F(JobDatabase, damageThatComesUpAtWorkIsSetAsideToo)
{
    saved("first");
    // Another program writes it back, so that the open connection reads it again, and then harms it.
    sqlRun(database(), "UPDATE job SET createTime = 1; PRAGMA wal_checkpoint(TRUNCATE)");
    {
        std::fstream file(database(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(4096);
        file << std::string(3 * 4096, '\xee');
    }
    saved("second");
    EXPECT_TRUE(fs::exists(aside()));
    EXPECT_THAT(rows(), ElementsAre("second"));
}

TEST_F(JobDatabase, aDatabaseWithoutJobsIsSetAside)
{
    fs::create_directories(jobsFolder());
    sqlRun(database(), "CREATE TABLE note (words TEXT); PRAGMA user_version = 1");
    EXPECT_TRUE(std::make_shared<TestJob>("roof")->save());
    EXPECT_THAT(sqlTexts(aside(), "SELECT name FROM sqlite_master"), ElementsAre("note"));
    EXPECT_THAT(rows(), ElementsAre("roof"));
}

TEST_F(JobDatabase, rowsOfTheFirstSchemaAreRun)
{
    fs::create_directories(jobsFolder());
    sqlRun(database(), firstSchema);
    sqlRun(database(), R"sql(INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES
('id2', 'test job', '{"jobId":"id2","createTime":2,"name":"second"}', 2, 2),
('id1', 'test job', '{"jobId":"id1","createTime":1,"name":"first"}', 1, 2))sql");
    runAll();
    EXPECT_THAT(TestJob::ran(), ElementsAre("first", "second"));
}

TEST_F(JobDatabase, ofANewerVersionIsNotTouched)
{
    fs::create_directories(jobsFolder());
    sqlRun(database(), "CREATE TABLE work (id TEXT); INSERT INTO work VALUES ('x'); PRAGMA user_version = 3");
    EXPECT_FALSE(IJobManager::Start({}));
    EXPECT_EQ(IJobManager::Get(), nullptr);
    EXPECT_FALSE(TestJob("roof").save());
    EXPECT_THAT(sqlTexts(database(), "SELECT id FROM work"), ElementsAre("x"));
    EXPECT_FALSE(fs::exists(aside()));
    const std::wstring reason = L": it was written by a newer version of this library, " + folder.wide("Jobs/jobs.db");
    EXPECT_THAT(log.lines(), ElementsAre(L"E [ORLOSDK]the job database can't be opened" + reason,
                                         L"E [ORLOSDK]the job database can't take a job" + reason));
}

TEST_F(JobDatabase, thatIsAFolderIsARefusal)
{
    fs::create_directories(database());
    EXPECT_FALSE(IJobManager::Start({}));
    EXPECT_FALSE(TestJob("roof").save());
    EXPECT_TRUE(log.has(L"E [ORLOSDK]the job database can't be opened: unable to open database file, " + folder.wide("Jobs/jobs.db")));
}

TEST_F(JobDatabase, thatIsLockedTakesNoJobAndLosesNone)
{
    const auto first = saved("first");
    SQLite::Database other(database().u8string(), SQLite::OPEN_READWRITE);
    other.exec("BEGIN IMMEDIATE");
    EXPECT_FALSE(TestJob("second").save());
    EXPECT_FALSE(first->remove());
    EXPECT_THAT(log.lines(),
                ElementsAre(L"E [ORLOSDK]the job database can't take a job: database is locked, " + folder.wide("Jobs/jobs.db"),
                            L"E [ORLOSDK]the job database can't drop a job: database is locked, " + folder.wide("Jobs/jobs.db")));
    other.exec("ROLLBACK");
    EXPECT_THAT(rows(), ElementsAre("first"));
    EXPECT_TRUE(TestJob("second").save());
}

TEST_F(JobDatabase, aJobWhoseRowCannotBeDroppedAtItsEndDoesNotRunAgain)
{
    ASSERT_TRUE(IJobManager::Start({}));
    SQLite::Database other(database().u8string(), SQLite::OPEN_READWRITE);
    TestJob::behave([&](TestJob& job) {
        other.exec("BEGIN IMMEDIATE");
        return job.remove();
    });
    const auto job = submit("roof");
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(job->GetStatus(), JobState::Failed);
    EXPECT_THAT(rows(), ElementsAre("roof"));
    other.exec("COMMIT");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_THAT(TestJob::ran(), ElementsAre("roof"));
}

TEST_F(JobDatabase, thatIsDeletedAtWorkIsMadeAnew)
{
    saved("lost");
    fs::remove_all(jobsFolder());
    fs::create_directories(jobsFolder());
    saved("kept");
    EXPECT_THAT(rows(), ElementsAre("kept"));
}

TEST_F(JobDatabase, thePlaceIsFixedWhileAManagerRuns)
{
    const TempFolder elsewhere;
    ASSERT_TRUE(IJobManager::Start({}));
    const auto gate = holdJobs();
    utils::setLocalRoot(elsewhere.wide());
    submit("roof");
    EXPECT_THAT(rows(), ElementsAre("roof"));
    gate->open();
    ASSERT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), IsEmpty());
    ASSERT_TRUE(IJobManager::Stop());
    saved("wall");
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(sqlTexts(elsewhere.path("Jobs/jobs.db"), "SELECT json_extract(json, '$.name') FROM job"), ElementsAre("wall"));
}

TEST_F(JobDatabase, aJobIsRemovedWhereItWasSaved)
{
    const TempFolder elsewhere;
    const auto job = saved("roof");
    utils::setLocalRoot(elsewhere.wide());
    EXPECT_TRUE(job->remove());
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobDatabase, aLoggerMayUseTheDatabaseItIsToldOf)
{
    class Curious : public SilentLog
    {
    public:
        void LogError(const std::wstring&) override { isRemoved = TestJob("any").remove(); }
        bool isRemoved = false;
    };
    fs::create_directories(jobsFolder());
    writeFile(database(), std::string(5000, 'x'));
    const auto logger = std::make_shared<Curious>();
    ILogManager::Install(logger);
    saved("roof");
    EXPECT_TRUE(logger->isRemoved);
}

TEST_F(JobDatabase, takesJobsFromManyThreads)
{
    inThreads(4, [] {
        for (int n = 0; n < 25; ++n)
            saved("job");
    });
    EXPECT_THAT(rows(), SizeIs(100));
}

} // namespace
} // namespace orlo::test
