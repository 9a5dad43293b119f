#include "JobsTest.h"
#include "support/ChildProcess.h"

#include <BaseCommon/Text.h>

#include <set>
#include <sstream>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class JobProcesses : public JobsTest
{
protected:
    std::vector<std::string> command() const { return {JOB_PROCESS, folder.path().string()}; }

    /// The names that jobs of the other processes left, in their order.
    Names ran() const
    {
        Names names;
        std::istringstream lines(readFile(folder.path("ran")));
        for (std::string line; std::getline(lines, line);)
            names.push_back(line);
        return names;
    }
};

TEST_F(JobProcesses, oneRunsTheJobsAndTheOtherAdds)
{
    ChildProcess runner(command());
    ASSERT_EQ(runner.ask("start"), "yes");
    EXPECT_EQ(runner.ask("runs"), "yes");
    ASSERT_TRUE(IJobManager::Start({}));
    EXPECT_FALSE(IJobManager::Get()->RunsJobs());
    const auto job = submit("roof");
    EXPECT_EQ(IJobManager::Get()->GetJob(job->JobId()), nullptr);
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_THAT(ran(), ElementsAre("roof"));
    EXPECT_THAT(TestJob::ran(), IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre(L"I [ORLOSDK]another process runs the jobs of " + folder.wide("Jobs/jobs.db"),
                            L"I [ORLOSDK]another process runs the jobs; it finds the row of job " + utils::toWstring(job->JobId())));
}

TEST_F(JobProcesses, aProcessWithoutAManagerAddsToo)
{
    ChildProcess runner(command());
    ASSERT_EQ(runner.ask("start 1"), "yes");
    saved("roof");
    saved("wall");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_THAT(ran(), ElementsAre("roof", "wall"));
}

TEST_F(JobProcesses, theOtherTakesOverWhenTheFirstIsKilled)
{
    ChildProcess first(command());
    ASSERT_EQ(first.ask("start 1"), "yes");
    ASSERT_EQ(first.ask("hold"), "yes");
    for (const char* name : {"save running", "save waiting"}) {
        ASSERT_EQ(first.ask(name), "yes");
        ASSERT_EQ(first.ask("add"), "yes");
    }
    ASSERT_TRUE(waitUntil([&] { return first.ask("held") == "1"; }));
    ASSERT_TRUE(IJobManager::Start(workers(1)));
    submit("mine");
    first.kill();
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_TRUE(IJobManager::Get()->RunsJobs());
    EXPECT_THAT(TestJob::ran(), ElementsAre("running", "waiting", "mine"));
    // Told once all rows are read, when the jobs may have ended already.
    EXPECT_TRUE(waitUntil([&] { return log.has(L"I [ORLOSDK]this process runs the jobs from now on: " + folder.wide("Jobs/jobs.db")); }));
}

TEST_F(JobProcesses, theOtherTakesOverWhenTheFirstStops)
{
    ASSERT_TRUE(IJobManager::Start({}));
    ChildProcess second(command());
    ASSERT_EQ(second.ask("start"), "yes");
    EXPECT_EQ(second.ask("runs"), "no");
    ASSERT_TRUE(IJobManager::Stop());
    saved("roof");
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }));
    EXPECT_EQ(second.ask("runs"), "yes");
    EXPECT_THAT(ran(), ElementsAre("roof"));
}

TEST_F(JobProcesses, aRowThatThisProcessSavedWaitsForItsOwnJob)
{
    ASSERT_TRUE(IJobManager::Start({}));
    const auto mine = saved("mine");
    ChildProcess other(command());
    ASSERT_EQ(other.ask("save theirs"), "yes");
    // Theirs was found, so the rows were read, and mine with them.
    ASSERT_TRUE(waitUntil([] { return TestJob::ranCount() == 1; }));
    EXPECT_THAT(TestJob::ran(), ElementsAre("theirs"));
    IJobManager::Get()->AddJob(mine);
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(mine->GetStatus(), JobState::Succeeded);
    EXPECT_THAT(TestJob::ran(), ElementsAre("theirs", "mine"));
}

TEST_F(JobProcesses, threeProcessesRunEveryJobOnce)
{
    ChildProcess first(command());
    ChildProcess second(command());
    ChildProcess third(command());
    Names all;
    for (ChildProcess* const process : {&first, &second, &third})
        ASSERT_EQ(process->ask("start"), "yes");
    for (int i = 0; i < 20; ++i) {
        for (ChildProcess* const process : {&first, &second, &third}) {
            all.push_back("job" + std::to_string(all.size()));
            ASSERT_EQ(process->ask("save " + all.back()), "yes");
            ASSERT_EQ(process->ask("add"), "yes");
        }
    }
    EXPECT_TRUE(waitUntil([&] { return rows().empty(); }, std::chrono::seconds(60)));
    EXPECT_THAT(ran(), testing::UnorderedElementsAreArray(all));
}

TEST_F(JobProcesses, twoProcessesMayOpenADamagedDatabaseAtOnce)
{
    std::filesystem::create_directories(jobsFolder());
    writeFile(database(), std::string(5000, 'x'));
    ChildProcess first(command());
    ChildProcess second(command());
    for (ChildProcess* const process : {&first, &second})
        process->tell("start");
    for (ChildProcess* const process : {&first, &second}) {
        EXPECT_EQ(process->ask("save job"), "yes"); // the answer to start
        EXPECT_EQ(process->ask("add"), "yes");      // the answer to save
    }
    EXPECT_TRUE(waitUntil([&] { return ran().size() == 2; }));
    EXPECT_TRUE(std::filesystem::exists(jobsFolder() / "jobs.db.damaged-1"));
    EXPECT_FALSE(std::filesystem::exists(jobsFolder() / "jobs.db.damaged-2"));
}

} // namespace
} // namespace orlo::test
