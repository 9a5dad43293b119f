#include "UploadJobsTest.h"
#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"

#include <OrloAuth/UserSession.h>
#include <OrloJobManager/IJobManager.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

#include <algorithm>
#include <mutex>
#include <set>

// Two users share a machine. What one of them handed over goes up in no other name.
namespace orlo::test {
namespace {

using platform::addUser;
using platform::grantPermission;
using platform::storedFiles;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = JobEvent::Kind;

class UploadJobAccount : public testing::Test
{
protected:
    UploadJobAccount()
    {
        place.platform.change(addUser, {"user-2", "account-2", "token-secret-2"});
        place.platform.change(addUser, {"user-1", "account-1", "token-renewed-1"});
        place.platform.change(grantPermission, "p-1", "account-2", "Folder", {"Read", "Write"});
    }
    ~UploadJobAccount() override
    {
        IJobManager::Stop();
        UserSession::SignOut();
    }

    static void firstSignsIn() { UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"}); }
    static void firstRenewsItsToken() { UserSession::SignIn({L"user-1", L"account-1", L"token-renewed-1"}); }
    static void secondSignsIn() { UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"}); }

    void start()
    {
        JobManagerOptions options;
        options.onEvent = [this](const JobEvent& event) {
            const std::lock_guard lock(m_mutex);
            m_kinds.push_back(event.kind);
        };
        ASSERT_TRUE(IJobManager::Start(options));
    }
    bool handOver(const std::string& name)
    {
        std::filesystem::create_directories(place.host.folder().path("Local"));
        writeFile(place.host.folder().path("Local/" + name), "bytes of " + name);
        return ICollaborationFileManager::UploadFileByJob("p-1", L"f-1", place.host.folder().wide("Local/" + name));
    }
    static bool becomesIdle() { return IJobManager::Get()->WaitForIdle(std::chrono::seconds(60)); }
    bool isTold(Kind kind)
    {
        return waitUntil([&] {
            const std::lock_guard lock(m_mutex);
            return std::find(m_kinds.begin(), m_kinds.end(), kind) != m_kinds.end();
        });
    }
    std::vector<Kind> told()
    {
        const std::lock_guard lock(m_mutex);
        return m_kinds;
    }

    /// Holds the next upload of bytes up.
    int stallAnUpload(int milliseconds)
    {
        platform::Fault stall;
        stall.kind = platform::FaultKind::Delay;
        stall.path = "/blobs/";
        stall.prefix = true;
        stall.method = "PUT";
        stall.delayMilliseconds = milliseconds;
        return place.platform.faults().add(stall);
    }
    std::vector<std::string> rows() const { return sqlTexts(place.host.folder().path("Jobs/jobs.db"), "SELECT json FROM job"); }
    /// Files lie in the platform's store below a folder that is named after the account that put them there.
    std::set<std::string> uploaders() const
    {
        std::set<std::string> accounts;
        for (const platform::StoredFile& file : place.platform.ask(storedFiles)) {
            const std::size_t account = file.remotePath.find("account-");
            accounts.insert(file.remotePath.substr(account, file.remotePath.find('/', account) - account));
        }
        return accounts;
    }

    PlatformHost place;
    LogCapture log;

private:
    std::mutex m_mutex;
    std::vector<Kind> m_kinds;
};

TEST_F(UploadJobAccount, aJobWaitsUntilWhoeverHandedItOverSignsIn)
{
    EXPECT_FALSE(handOver("plan.dwg")) << "no manager runs; the row stays";
    secondSignsIn();
    start();
    EXPECT_TRUE(becomesIdle()) << "what another account handed over is not waited for";
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(IJobManager::Get()->GetJobs(), SizeIs(1));
    EXPECT_THAT(place.platform.ask(storedFiles), IsEmpty());
    firstSignsIn();
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(place.holds("plan.dwg", "bytes of plan.dwg"));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(uploaders(), ElementsAre("account-1"));
}

TEST_F(UploadJobAccount, theOtherUsersJobsRunMeanwhile)
{
    EXPECT_FALSE(handOver("plan.dwg"));
    secondSignsIn();
    start();
    EXPECT_TRUE(handOver("other.dwg"));
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(uploaders(), ElementsAre("account-2"));
}

TEST_F(UploadJobAccount, aSignOutBreaksTheRunOffAndTheNextSignInRepeatsIt)
{
    const int stall = stallAnUpload(60000);
    start();
    ASSERT_TRUE(handOver("plan.dwg"));
    ASSERT_TRUE(waitUntil([&] { return place.platform.faults().count(stall) == 1; }));
    UserSession::SignOut();
    ASSERT_TRUE(isTold(Kind::CutOff));
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_EQ(IJobManager::Get()->GetJobs().at(0)->GetStatus(), JobState::Waiting);
    firstSignsIn();
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(place.holds("plan.dwg", "bytes of plan.dwg"));
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(told(), ElementsAre(Kind::Added, Kind::Started, Kind::CutOff, Kind::Started, Kind::Ended));
}

TEST_F(UploadJobAccount, aRunDoesNotGoOnInTheNameOfAnother)
{
    const int stall = stallAnUpload(60000);
    start();
    ASSERT_TRUE(handOver("plan.dwg"));
    ASSERT_TRUE(waitUntil([&] { return place.platform.faults().count(stall) == 1; }));
    secondSignsIn();
    ASSERT_TRUE(isTold(Kind::CutOff));
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), SizeIs(1));
    EXPECT_THAT(place.datasets("plan.dwg"), IsEmpty());
    firstSignsIn();
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(place.datasets("plan.dwg"), SizeIs(1));
    EXPECT_THAT(uploaders(), ElementsAre("account-1"));
}

TEST_F(UploadJobAccount, aRenewedTokenDisturbsNoRun)
{
    const int stall = stallAnUpload(500);
    start();
    ASSERT_TRUE(handOver("plan.dwg"));
    ASSERT_TRUE(waitUntil([&] { return place.platform.faults().count(stall) == 1; }));
    firstRenewsItsToken();
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(told(), ElementsAre(Kind::Added, Kind::Started, Kind::Ended));
    EXPECT_THAT(place.platform.ask(storedFiles), SizeIs(1));
    EXPECT_TRUE(place.holds("plan.dwg", "bytes of plan.dwg"));
}

TEST_F(UploadJobAccount, whatNobodyHandedOverRunsForWhoeverIsSignedIn)
{
    UserSession::SignOut();
    EXPECT_FALSE(handOver("plan.dwg"));
    secondSignsIn();
    start();
    EXPECT_TRUE(becomesIdle());
    EXPECT_THAT(rows(), IsEmpty());
    EXPECT_THAT(uploaders(), ElementsAre("account-2"));
}

// The failures of a signed-in user are the job's own.
TEST_F(UploadJobAccount, aFailureWithoutASignOutIsAnOutcome)
{
    place.platform.stop();
    const RetryLimit none{0};
    start();
    ASSERT_TRUE(handOver("plan.dwg"));
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(IJobManager::Stop());
    EXPECT_THAT(told(), ElementsAre(Kind::Added, Kind::Started, Kind::Ended));
    EXPECT_THAT(rows(), IsEmpty());
}

} // namespace
} // namespace orlo::test
