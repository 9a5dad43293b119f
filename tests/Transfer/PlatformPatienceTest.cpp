// Uploads that are cancelled, waited for and signed in again, with a platform that keeps its files.

#include "support/PlatformHost.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/RequestError.h>
#include <OrloAuth/UserSession.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <LocalPlatform/LocalPlatform.h>
#include <thread>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using platform::Fault;
using platform::FaultKind;

class PlatformPatienceTest : public testing::Test
{
protected:
    ~PlatformPatienceTest() override
    {
        UserSession::SetTokenSource(nullptr);
        http::setBackoffPolicy(std::nullopt);
    }

    std::wstring file() const
    {
        writeFile(all.host.folder().path("plan.dwg"), patterned(3'000'000));
        return all.host.folder().wide("plan.dwg");
    }

    /// The store takes some bytes of the next upload, and no more for ten minutes.
    int stallTheNextUpload()
    {
        Fault fault;
        fault.kind = FaultKind::Stall;
        fault.path = "/blobs/";
        fault.prefix = true;
        fault.method = "PUT";
        fault.ofRequest = true;
        fault.bytes = 100'000;
        fault.delayMilliseconds = 600'000;
        return all.platform.faults().add(fault);
    }

    void expectUploaded() const
    {
        ASSERT_EQ(all.datasets("plan.dwg").size(), 1U);
        EXPECT_EQ(all.versions(all.datasets("plan.dwg").at(0)), 1);
        const auto stored = all.platform.ask(platform::storedFiles);
        EXPECT_EQ(all.platform.ask(platform::contentOf, stored.back().remotePath), patterned(3'000'000));
    }

    PlatformHost all;
    const RetryLimit retries{3};
    LogCapture log;
    ErrorCode error;
};

TEST_F(PlatformPatienceTest, aStalledUploadThatIsCancelledLeavesNothingOnThePlatform)
{
    const int fault = stallTheNextUpload();
    const CancelToken token;
    Progress last;
    std::thread cancelling([&] {
        EXPECT_TRUE(waitUntil([&] { return all.platform.faults().count(fault) == 1; }));
        token.cancel();
    });
    {
        const CallScope scope(token, [&](const Progress& progress) { last = progress; });
        EXPECT_EQ(ICollaborationFileManager::Get()->UploadFile(L"f-1", file(), error), nullptr);
    }
    cancelling.join();
    EXPECT_TRUE(isCancelled(error));
    EXPECT_EQ(last.fileBytesInAll, 3'000'000U);
    EXPECT_TRUE(all.datasets().empty());
}

TEST_F(PlatformPatienceTest, aStalledUploadIsRepeatedAfterTheStallTimeOut)
{
    all.host.change([](OrloConfig& config) { config.stallTimeoutSeconds = 1; });
    stallTheNextUpload();
    EXPECT_NE(ICollaborationFileManager::Get()->UploadFile(L"f-1", file(), error), nullptr);
    expectUploaded();
    EXPECT_TRUE(log.has(L"W [ORLOSDK]OrloNetworkRetry::GenericRetryHandler - retry attempts[1]"));
}

TEST_F(PlatformPatienceTest, aTokenThatExpiresInTheMiddleOfTheDayIsRenewed)
{
    const auto user = UserSession::GetInstance();
    const std::string old = utils::toString(user->getAccessToken());
    std::atomic<int> asked{0};
    UserSession::SetTokenSource([&](const UserIdentity& who) {
        ++asked;
        all.platform.change(platform::addUser, {utils::toString(who.userId), utils::toString(who.accountId), "another-token-1"});
        return std::wstring(L"another-token-1");
    });
    all.platform.change(platform::setRevoked, old, true);
    EXPECT_NE(ICollaborationFileManager::Get()->UploadFile(L"f-1", file(), error), nullptr);
    expectClear(error);
    expectUploaded();
    EXPECT_EQ(asked, 1);
    all.platform.change(platform::setRevoked, std::string("another-token-1"), true);
    all.platform.change(platform::setRevoked, old, false);
}

TEST_F(PlatformPatienceTest, aBusyPlatformIsAskedAgainBehindGrowingPauses)
{
    http::setRetryPolicy({5, 3600});
    http::setBackoffPolicy(http::BackoffPolicy{1ms, 2, 20ms, 0.5, true});
    Fault busy;
    busy.path = "/projects";
    busy.status = 429;
    busy.calls = 4;
    const int fault = all.platform.faults().add(busy);
    EXPECT_EQ(ICollaborationProjectManager::Get()->GetAllProjects(error).size(), 1U);
    EXPECT_EQ(all.platform.faults().count(fault), 4);
    expectClear(error);
}

} // namespace
} // namespace orlo::test
