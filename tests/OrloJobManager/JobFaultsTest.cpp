#include "FirstSchema.h"
#include "JobsTest.h"
#include "support/ChildProcess.h"
#include "support/FaultyFiles.h"

#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>

#include <filesystem>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class JobFaults : public JobsTest
{
protected:
    std::string soundness() const { return sqlTexts(database(), "PRAGMA integrity_check").front(); }
};

TEST_F(JobFaults, aSavedJobWasFlushed)
{
    const FaultyFiles files;
    saved("first");
    const int before = files.flushes();
    saved("second");
    EXPECT_GT(files.flushes(), before);
}

TEST_F(JobFaults, wheneverTheDiskFillsUpSaveTellsTheTruth)
{
    saved("first");
    FaultyFiles files;
    const TempFolder elsewhere;
    bool isSaved = false;
    int step = 0;
    while (!isSaved && step < 200) {
        // The connection is a new one each time, so that opening fails too.
        utils::setLocalRoot(elsewhere.wide());
        saved("somewhere else");
        utils::setLocalRoot(folder.wide());
        files.reset();
        files.fillDiskAt(++step);
        TestJob job("step " + std::to_string(step));
        isSaved = job.save();
        files.reset();
        EXPECT_EQ(rows(), isSaved ? Names({"first", job.name}) : Names({"first"})) << step;
        EXPECT_EQ(soundness(), "ok") << step;
    }
    EXPECT_TRUE(isSaved);
    EXPECT_GT(step, 1);
}

TEST_F(JobFaults, aFullDiskTakesNoJobAndLosesNone)
{
    saved("first");
    ChildProcess host({JOB_PROCESS, folder.path().string()});
    ASSERT_EQ(host.ask("start"), "yes");
    ASSERT_EQ(host.ask("idle"), "yes");
    saved("second");
    ASSERT_EQ(host.ask("limit 1000"), "yes");
    EXPECT_EQ(host.ask("save third"), "no");
    EXPECT_THAT(host.ask("error"), HasSubstr("the job database can't take a job: "));
    ASSERT_EQ(host.ask("limit none"), "yes");
    EXPECT_EQ(host.ask("save third"), "yes");
    EXPECT_EQ(host.ask("add"), "yes");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    const std::string ran = readFile(folder.path("ran"));
    for (const char* name : {"first\n", "second\n", "third\n"})
        EXPECT_THAT(ran, HasSubstr(name));
    EXPECT_EQ(ran.size(), 19u) << "each of them once";
    EXPECT_EQ(soundness(), "ok");
}

TEST_F(JobFaults, aManagerDoesNotStartWhereNobodyCanRunTheJobs)
{
    saved("first");
    fs::create_directory(database().string() + ".running");
    EXPECT_FALSE(IJobManager::Start({}));
    EXPECT_EQ(IJobManager::Get(), nullptr);
    EXPECT_TRUE(log.has(L"E [ORLOSDK]nobody can run the jobs, since their lock can't be opened: " +
                        utils::toWstring(database().u8string() + ".running")));
    fs::remove(database().string() + ".running");
    ASSERT_TRUE(IJobManager::Start({}));
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), IsEmpty());
}

TEST_F(JobFaults, aManagerDoesNotStartOnAFullDisk)
{
    ChildProcess host({JOB_PROCESS, folder.path().string()});
    ASSERT_EQ(host.ask("limit 0"), "yes");
    EXPECT_EQ(host.ask("start"), "no");
    EXPECT_THAT(host.ask("error"), HasSubstr("the job database can't be opened: "));
    EXPECT_EQ(host.ask("save roof"), "no");
    ASSERT_EQ(host.ask("limit none"), "yes");
    EXPECT_EQ(host.ask("start"), "yes");
    EXPECT_EQ(host.ask("save roof"), "yes");
}

/// The host is nobody's, and the folder is not.
class ReadOnlyJobs : public JobFaults
{
protected:
    void SetUp() override
    {
        fs::permissions(folder.path(), fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
        fs::create_directories(jobsFolder());
    }
    void protect(fs::perms databasePermissions)
    {
        if (fs::exists(database()))
            fs::permissions(database(), databasePermissions);
        fs::permissions(jobsFolder(), fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read | fs::perms::others_exec);
    }
    void TearDown() override
    {
        fs::permissions(jobsFolder(), fs::perms::owner_all);
        JobsTest::TearDown();
    }

    void expectRefusal(ChildProcess& host)
    {
        ASSERT_EQ(host.ask("nobody"), "yes");
        EXPECT_EQ(host.ask("start"), "no");
        EXPECT_THAT(host.ask("error"), HasSubstr("the job database can't be opened: "));
        EXPECT_EQ(host.ask("save roof"), "no");
        EXPECT_THAT(host.ask("error"), HasSubstr("the job database can't take a job: "));
    }
};

TEST_F(ReadOnlyJobs, anEmptyFolderIsRefused)
{
    ChildProcess host({JOB_PROCESS, folder.path().string()});
    protect({});
    expectRefusal(host);
    EXPECT_TRUE(fs::is_empty(jobsFolder()));
}

TEST_F(ReadOnlyJobs, aFolderWithJobsIsRefusedAndLeftAsItIs)
{
    sqlRun(database(), firstSchema);
    sqlRun(database(), "INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES ('id', 'test job', '{}', 1, 2)");
    const std::string before = readFile(database());
    ChildProcess host({JOB_PROCESS, folder.path().string()});
    protect(fs::perms::owner_read | fs::perms::others_read);
    expectRefusal(host);
    EXPECT_EQ(readFile(database()), before);
}

TEST_F(ReadOnlyJobs, aDatabaseThatNobodyMayReadIsRefused)
{
    saved("first");
    ChildProcess host({JOB_PROCESS, folder.path().string()});
    protect(fs::perms::owner_read);
    expectRefusal(host);
    EXPECT_THAT(rows(), ElementsAre("first"));
}

} // namespace
} // namespace orlo::test
