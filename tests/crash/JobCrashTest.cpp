#include "Kills.h"
#include "support/ChildProcess.h"
#include "support/Sql.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>

// A host of the job library is killed; the next one finds every job that was accepted, and at the end no row is left.
namespace orlo::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// The local root of one host after the other.
class Root
{
public:
    std::vector<std::string> host() const { return {JOB_PROCESS, m_folder.path().string()}; }

    std::vector<std::string> ran() const
    {
        std::vector<std::string> names;
        std::istringstream lines(readFile(m_folder.path("ran")));
        for (std::string line; std::getline(lines, line);)
            names.push_back(line);
        return names;
    }
    std::vector<std::string> rows() const
    {
        return sqlTexts(m_folder.path("Jobs/jobs.db"), "SELECT json_extract(json, '$.name') FROM job ORDER BY rank");
    }

    /// Another host does what was left, and finds the database in order.
    void finish() const
    {
        ChildProcess next(host());
        ASSERT_EQ(next.ask("start 1"), "yes"); // one worker, so that the order is the jobs' own
        ASSERT_EQ(next.ask("idle"), "yes");
        ASSERT_EQ(next.ask("stop"), "yes");
        EXPECT_EQ(next.ask("error"), "-");
        EXPECT_THAT(rows(), IsEmpty());
        EXPECT_THAT(sqlTexts(m_folder.path("Jobs/jobs.db"), "PRAGMA integrity_check"), ElementsAre("ok"));
        EXPECT_FALSE(std::filesystem::exists(m_folder.path("Jobs/jobs.db.damaged-1")));
    }

private:
    TempFolder m_folder;
};

TEST(JobCrash, afterSaveTheJobIsRunByTheNextHost)
{
    const Root root;
    ChildProcess host(root.host());
    ASSERT_EQ(host.ask("start"), "yes");
    ASSERT_EQ(host.ask("save roof"), "yes");
    host.kill();
    EXPECT_THAT(root.rows(), ElementsAre("roof"));
    root.finish();
    EXPECT_THAT(root.ran(), ElementsAre("roof"));
}

TEST(JobCrash, whileTheJobWaitsItIsRunByTheNextHost)
{
    const Root root;
    ChildProcess host(root.host());
    ASSERT_EQ(host.ask("start 1"), "yes");
    ASSERT_EQ(host.ask("hold"), "yes");
    for (const char* name : {"save first", "save second"}) {
        ASSERT_EQ(host.ask(name), "yes");
        ASSERT_EQ(host.ask("add"), "yes");
    }
    host.kill();
    root.finish();
    EXPECT_THAT(root.ran(), ElementsAre("first", "second"));
}

/// Where the host dies, and how often the job's work is done then.
struct Step
{
    const char* point;
    std::size_t runs;
};

class JobCrashAt : public testing::TestWithParam<Step>
{};

TEST_P(JobCrashAt, losesNothingAndLeavesNothing)
{
    const Root root;
    ChildProcess host(root.host());
    ASSERT_EQ(host.ask("start"), "yes");
    ASSERT_EQ(host.ask(std::string("die-at ") + GetParam().point), "yes");
    ASSERT_EQ(host.ask("save roof"), "yes");
    host.tell("add");
    EXPECT_EQ(host.wait(), ChildProcess::killed);
    root.finish();
    EXPECT_EQ(root.ran(), std::vector<std::string>(GetParam().runs, "roof"));
}

INSTANTIATE_TEST_SUITE_P(JobCrash, JobCrashAt, testing::Values(Step{"run", 1}, Step{"work", 2}, Step{"remove", 1}),
                         [](const auto& tested) { return std::string("the_step_") + tested.param.point; });

/// One life of a host, which dies at a step of its database files.   Returns: whether it lived through.
bool livesThrough(const Root& root, int step, bool& isAccepted)
{
    ChildProcess host(root.host());
    host.ask("die-at-step " + std::to_string(step));
    host.ask("start");
    isAccepted = host.ask("save roof") == "yes";
    host.ask("add");
    host.ask("idle");
    host.ask("stop");
    host.tell("leave");
    return host.wait() == 0;
}

void saveEarlier(const Root& root)
{
    ChildProcess host(root.host());
    ASSERT_EQ(host.ask("save earlier"), "yes");
    host.kill();
}

class JobCrashInFiles : public testing::TestWithParam<bool>
{};

TEST_P(JobCrashInFiles, atEveryStepNothingIsLost)
{
    bool isOver = false;
    int step = 0;
    while (!isOver && step < 300 && !HasFailure()) {
        SCOPED_TRACE(++step);
        const Root root;
        if (GetParam())
            saveEarlier(root);
        bool isAccepted = false;
        isOver = livesThrough(root, step, isAccepted);
        root.finish();
        if (isAccepted) {
            EXPECT_THAT(root.ran(), Contains("roof"));
        }
        if (GetParam()) {
            EXPECT_THAT(root.ran(), Contains("earlier"));
        }
    }
    EXPECT_TRUE(isOver);
    EXPECT_GT(step, 10);
}

INSTANTIATE_TEST_SUITE_P(JobCrash, JobCrashInFiles, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "with_a_job_of_an_earlier_host" : "from_an_empty_folder"; });

TEST(JobCrash, atRandomInstantsNothingIsLost)
{
    const int kills = wantedKills();
    const Root root;
    const std::vector<std::string> accepted = pouredByKilled(kills, root.host());
    root.finish();
    const std::vector<std::string> names = root.ran();
    const std::set<std::string> ran(names.begin(), names.end());
    for (const std::string& name : accepted)
        EXPECT_EQ(ran.count(name), 1u) << name;
    EXPECT_FALSE(accepted.empty());
    std::cout << kills << " kills, " << accepted.size() << " jobs accepted, " << names.size() << " runs\n";
}

} // namespace
} // namespace orlo::test
