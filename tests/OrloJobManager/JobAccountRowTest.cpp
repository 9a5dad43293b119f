#include "FirstSchema.h"
#include "JobsTest.h"
#include "support/ChildProcess.h"

#include <OrloAuth/UserSession.h>

#include <filesystem>

namespace orlo::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

/// Who a job belongs to, as its row tells.
class JobAccountRow : public JobsTest
{
protected:
    JobAccountRow() { UserSession::SignOut(); }
    void TearDown() override
    {
        UserSession::SignOut();
        JobsTest::TearDown();
    }

    static void signIn(const std::wstring& account) { UserSession::SignIn({L"user", account, L"token-of-a-test"}); }

    Names accounts() const { return sqlTexts(database(), "SELECT account FROM job ORDER BY rank"); }

    /// A database of the first version with two jobs in it.
    void makeFirstSchema() const
    {
        fs::create_directories(jobsFolder());
        sqlRun(database(), firstSchema);
        sqlRun(database(), R"sql(INSERT INTO job (id, typeKey, json, createTime, jobType) VALUES
('id1', 'test job', '{"jobId":"id1","createTime":1,"name":"first"}', 1, 2),
('id2', 'test job', '{"jobId":"id2","createTime":2,"name":"second"}', 2, 2))sql");
    }
};

TEST_F(JobAccountRow, isWhoeverIsSignedInWhenTheJobIsSaved)
{
    signIn(L"account-\u00e4");
    const auto first = saved("first");
    signIn(L"account-b");
    const auto second = saved("second");
    EXPECT_THAT(accounts(), ElementsAre("account-\xc3\xa4", "account-b"));
    EXPECT_EQ(first->account(), "account-\xc3\xa4");
    EXPECT_EQ(second->account(), "account-b");
}

TEST_F(JobAccountRow, isEmptyWhileNobodyIsSignedIn)
{
    const auto job = saved("roof");
    EXPECT_THAT(accounts(), ElementsAre(""));
    EXPECT_EQ(job->account(), "");
    signIn(L"account-a");
    EXPECT_TRUE(job->save());
    EXPECT_THAT(accounts(), ElementsAre(""));
    EXPECT_EQ(job->account(), "");
}

TEST_F(JobAccountRow, isNotInTheJson)
{
    signIn(L"account-a");
    const auto job = saved("roof", 1234567890123);
    EXPECT_THAT(sqlTexts(database(), "SELECT json FROM job"),
                ElementsAre("{\"jobId\":\"" + job->JobId() + "\",\"createTime\":1234567890123,\"name\":\"roof\"}"));
}

TEST_F(JobAccountRow, staysWhoeverSavesTheJobAgain)
{
    signIn(L"account-a");
    const auto job = saved("roof");
    signIn(L"account-b");
    job->name = "roof again";
    EXPECT_TRUE(job->save());
    EXPECT_THAT(rows(), ElementsAre("roof again"));
    EXPECT_THAT(accounts(), ElementsAre("account-a"));
    EXPECT_EQ(job->account(), "account-a");
}

TEST_F(JobAccountRow, isToldToAnotherObjectOfTheSameJobToo)
{
    signIn(L"account-a");
    const auto job = saved("roof");
    signIn(L"account-b");
    TestJob twin;
    ASSERT_TRUE(twin.LoadFromJson(job->ToJson()));
    EXPECT_EQ(twin.account(), "");
    EXPECT_TRUE(twin.save());
    EXPECT_EQ(twin.account(), "account-a");
    EXPECT_THAT(accounts(), ElementsAre("account-a"));
}

TEST_F(JobAccountRow, staysWhereTheRowHasToBeWrittenAnew)
{
    signIn(L"account-a");
    const auto job = saved("roof");
    fs::remove_all(jobsFolder());
    fs::create_directories(jobsFolder());
    signIn(L"account-b");
    EXPECT_TRUE(job->save());
    EXPECT_THAT(accounts(), ElementsAre("account-a"));
}

TEST_F(JobAccountRow, staysUnknownWhereTheJobCannotBeSaved)
{
    fs::create_directories(database());
    signIn(L"account-a");
    TestJob job("roof");
    EXPECT_FALSE(job.save());
    fs::remove(database());
    signIn(L"account-b");
    EXPECT_TRUE(job.save());
    EXPECT_EQ(job.account(), "account-b");
}

TEST_F(JobAccountRow, ofARebuiltJobIsThatOfItsRow)
{
    signIn(L"account-a");
    const std::string id = saved("roof")->JobId();
    const auto gate = std::make_shared<Gate>();
    TestJob::behave([gate](TestJob& job) { return gate->wait() && job.save(); });
    ASSERT_TRUE(IJobManager::Start({}));
    const auto rebuilt = std::dynamic_pointer_cast<LocalDbJobEntity>(IJobManager::Get()->GetJob(id));
    ASSERT_NE(rebuilt, nullptr);
    EXPECT_EQ(rebuilt->account(), "account-a");
    gate->open();
}

TEST_F(JobAccountRow, isEmptyForJobsOfTheFirstSchema)
{
    makeFirstSchema();
    signIn(L"account-a");
    saved("third");
    EXPECT_THAT(rows(), ElementsAre("first", "second", "third"));
    EXPECT_THAT(accounts(), ElementsAre("", "", "account-a"));
    EXPECT_THAT(sqlTexts(database(), "PRAGMA user_version"), ElementsAre("2"));
}

TEST_F(JobAccountRow, isAddedOnceWhenTwoProcessesOpenTheFirstSchemaAtOnce)
{
    makeFirstSchema();
    ChildProcess first({JOB_PROCESS, folder.path().string()});
    ChildProcess second({JOB_PROCESS, folder.path().string()});
    for (ChildProcess* const process : {&first, &second})
        process->tell("save job");
    for (ChildProcess* const process : {&first, &second})
        EXPECT_EQ(process->ask("error"), "yes"); // the answer to save
    for (ChildProcess* const process : {&first, &second})
        EXPECT_EQ(process->ask("error"), "-"); // to the first of the two questions
    EXPECT_THAT(rows(), ElementsAre("first", "second", "job", "job"));
    EXPECT_THAT(accounts(), ElementsAre("", "", "", ""));
    EXPECT_THAT(sqlTexts(database(), "PRAGMA user_version"), ElementsAre("2"));
    EXPECT_FALSE(fs::exists(jobsFolder() / "jobs.db.damaged-1"));
}

} // namespace
} // namespace orlo::test
