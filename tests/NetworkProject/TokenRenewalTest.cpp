// Tokens that expire, and a host that has others.

#include "support/Threads.h"
#include "support/TransferTestSupport.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/RequestError.h>
#include <OrloAuth/UserSession.h>
#include <OrloProjectManager/OrloProjectManager.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace orlo::test {
namespace {

constexpr const char* oldToken = "Bearer token-secret-1";
constexpr const char* newToken = "Bearer token-secret-2";

class TokenRenewalTest : public TransferTest
{
protected:
    ~TokenRenewalTest() override { UserSession::SetTokenSource(nullptr); }

    /// Gives this token each time.
    void give(const std::wstring& token)
    {
        UserSession::SetTokenSource([this, token](const UserIdentity& who) {
            ++asked;
            EXPECT_EQ(who.userId, L"user-1");
            EXPECT_EQ(who.accountId, L"account-1");
            return token;
        });
    }

    Expectation& expectWith(const char* token) { return platform.expect("POST", target).anyBody().header("Authorization", token); }
    void takeNewTokensAlone()
    {
        platform.always("POST", target).replyWith([this](const Request& request) {
            const bool isOld = request.header("Authorization") == oldToken;
            return Reply{isOld ? 401 : 200, yes, "application/json", {}, false};
        });
    }
    bool publish() { return IWorkUnit::MarkPublish("ds-1", 1, L"", error); }

    const std::string target = "/datasets/ds-1/1/markPublish";
    const std::string yes = R"({"data":true})";
    std::atomic<int> asked{0};
};

TEST_F(TokenRenewalTest, theCallIsRepeatedOnceWithTheNewToken)
{
    give(L"token-secret-2");
    expectWith(oldToken).reply(401, "expired");
    expectWith(newToken).reply(200, yes);
    EXPECT_TRUE(publish());
    expectClear(error);
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(UserSession::GetInstance()->getAccessToken(), L"token-secret-2");
    EXPECT_EQ(UserSession::GetInstance()->GetId(), L"user-1");
}

TEST_F(TokenRenewalTest, laterCallsTakeTheNewTokenAtOnce)
{
    give(L"token-secret-2");
    expectWith(oldToken).reply(401);
    expectWith(newToken).reply(200, yes);
    expectWith(newToken).reply(200, yes);
    EXPECT_TRUE(publish());
    EXPECT_TRUE(publish());
    EXPECT_EQ(asked, 1);
}

TEST_F(TokenRenewalTest, aSecondRefusalIsFinal)
{
    give(L"token-secret-2");
    expectWith(oldToken).reply(401, "expired");
    expectWith(newToken).reply(401, "still no");
    EXPECT_FALSE(publish());
    expectHttpError(error, errorStatusValue, L"HttpError", L"still no", 401);
    EXPECT_EQ(asked, 1);
}

TEST_F(TokenRenewalTest, withoutASourceARefusalIsAFailureLikeOthers)
{
    expectWith(oldToken).reply(401, "expired");
    EXPECT_FALSE(publish());
    expectHttpError(error, errorStatusValue, L"HttpError", L"expired", 401);
}

TEST_F(TokenRenewalTest, aSourceThatHasNoneLeavesTheFailureAsItIs)
{
    for (const wchar_t* const token : {L"", L"token-secret-1"}) {
        give(token);
        expectWith(oldToken).reply(401, "expired");
        EXPECT_FALSE(publish());
        expectHttpError(error, errorStatusValue, L"HttpError", L"expired", 401);
    }
}

TEST_F(TokenRenewalTest, aSourceThatThrowsHasNoToken)
{
    UserSession::SetTokenSource([](const UserIdentity&) -> std::wstring { throw std::runtime_error("token-secret-9"); });
    expectWith(oldToken).reply(401);
    EXPECT_FALSE(publish());
    UserSession::SetTokenSource([](const UserIdentity&) -> std::wstring { throw 1; });
    expectWith(oldToken).reply(401);
    EXPECT_FALSE(publish());
    EXPECT_FALSE(log.holds(L"token-secret-9"));
}

TEST_F(TokenRenewalTest, otherRefusalsAskForNothing)
{
    give(L"token-secret-2");
    expectWith(oldToken).reply(403);
    EXPECT_FALSE(publish());
    EXPECT_EQ(asked, 0);
}

TEST_F(TokenRenewalTest, manyCallsAskOnce)
{
    give(L"token-secret-2");
    takeNewTokensAlone();
    std::atomic<int> done{0};
    inThreads(8, [&] {
        ErrorCode own;
        done += IWorkUnit::MarkPublish("ds-1", 1, L"", own) ? 1 : 0;
    });
    EXPECT_EQ(done, 8);
    EXPECT_EQ(asked, 1);
}

TEST_F(TokenRenewalTest, theOthersWaitForTheOneWhoAsks)
{
    std::promise<void> mayGo;
    std::shared_future<void> go = mayGo.get_future().share();
    UserSession::SetTokenSource([this, go](const UserIdentity&) {
        ++asked;
        go.wait();
        return std::wstring(L"token-secret-2");
    });
    takeNewTokensAlone();
    std::atomic<int> done{0};
    std::vector<std::thread> calls;
    for (int i = 0; i < 4; ++i)
        calls.emplace_back([&] {
            ErrorCode own;
            done += IWorkUnit::MarkPublish("ds-1", 1, L"", own) ? 1 : 0;
        });
    EXPECT_TRUE(waitUntil([&] { return platform.requestCount() == 4 && asked == 1; }));
    EXPECT_EQ(done, 0);
    mayGo.set_value();
    for (std::thread& call : calls)
        call.join();
    EXPECT_EQ(done, 4);
    EXPECT_EQ(asked, 1);
}

TEST_F(TokenRenewalTest, whoWaitsCanBeCancelled)
{
    std::promise<void> mayGo;
    std::shared_future<void> go = mayGo.get_future().share();
    UserSession::SetTokenSource([this, go](const UserIdentity&) {
        ++asked;
        go.wait();
        return std::wstring();
    });
    platform.always("POST", target).reply(401);
    std::thread asking([&] {
        ErrorCode own;
        IWorkUnit::MarkPublish("ds-1", 1, L"", own);
    });
    EXPECT_TRUE(waitUntil([&] { return asked == 1; }));
    const CancelToken token;
    std::thread cancelling([&] {
        EXPECT_TRUE(platform.waitForRequests(2));
        token.cancel();
    });
    {
        const CallScope scope(token);
        EXPECT_FALSE(publish());
    }
    EXPECT_TRUE(isCancelled(error));
    cancelling.join();
    mayGo.set_value();
    asking.join();
}

TEST_F(TokenRenewalTest, whoAskedFirstCanBeCancelledToo)
{
    std::promise<void> mayGo;
    std::shared_future<void> go = mayGo.get_future().share();
    UserSession::SetTokenSource([this, go](const UserIdentity&) {
        ++asked;
        go.wait();
        return std::wstring();
    });
    expectWith(oldToken).reply(401);
    const CancelToken token;
    std::thread cancelling([&] {
        EXPECT_TRUE(waitUntil([&] { return asked == 1; }));
        token.cancel();
    });
    {
        const CallScope scope(token);
        EXPECT_FALSE(publish());
    }
    EXPECT_TRUE(isCancelled(error));
    cancelling.join();
    mayGo.set_value();
}

TEST_F(TokenRenewalTest, manyCallsAskASourceThatHasNoneOnce)
{
    UserSession::SetTokenSource([this](const UserIdentity&) -> std::wstring {
        ++asked;
        throw std::runtime_error("down");
    });
    constexpr int calls = 8;
    platform.always("POST", target).replyWith([this](const Request&) { // all are there before the first is refused
        EXPECT_TRUE(platform.waitForRequests(calls));
        return Reply{401, "", "application/json", {}, false};
    });
    inThreads(calls, [&] {
        ErrorCode own;
        EXPECT_FALSE(IWorkUnit::MarkPublish("ds-1", 1, L"", own));
    });
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(publish());
    EXPECT_EQ(asked, 2) << "a request that is made later asks again";
}

TEST_F(TokenRenewalTest, aRenewalForTheUserBeforeIsNoAnswerForTheNextOne)
{
    std::promise<void> mayGo;
    std::shared_future<void> go = mayGo.get_future().share();
    UserSession::SetTokenSource([this, go](const UserIdentity& who) {
        ++asked;
        if (who.userId == L"user-1")
            go.wait();
        return who.userId == L"user-1" ? std::wstring() : std::wstring(L"token-secret-4");
    });
    platform.always("POST", target).replyWith([this](const Request& request) {
        const bool isNew = request.header("Authorization") == "Bearer token-secret-4";
        return Reply{isNew ? 200 : 401, yes, "application/json", {}, false};
    });
    std::thread before([] {
        ErrorCode own;
        IWorkUnit::MarkPublish("ds-1", 1, L"", own);
    });
    EXPECT_TRUE(waitUntil([&] { return asked == 1; }));
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-3"});
    std::thread next([this] { EXPECT_TRUE(publish()); });
    EXPECT_TRUE(platform.waitForRequests(2));
    mayGo.set_value();
    before.join();
    next.join();
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(UserSession::GetInstance()->getAccessToken(), L"token-secret-4");
}

TEST_F(TokenRenewalTest, nobodyIsAskedForAUserWhoHasGone)
{
    give(L"token-secret-2");
    platform.expect("POST", target).anyBody().replyWith([](const Request&) {
        UserSession::SignOut();
        return Reply{401, "", "application/json", {}, false};
    });
    EXPECT_FALSE(publish());
    EXPECT_EQ(asked, 0);
}

TEST_F(TokenRenewalTest, theRepeatedRequestOfATransferIsTheSameAttempt)
{
    const RetryLimit three(3);
    std::atomic<int> tokens{2};
    UserSession::SetTokenSource([&](const UserIdentity&) { return L"token-secret-" + std::to_wstring(tokens++); });
    const std::string authorityPath = "/file/new?fileName=n&filepath=p";
    for (const int status : {503, 401, 503, 401, 500, 500})
        platform.expect("PUT", authorityPath).reply(status, "0123456789");
    Progress last;
    {
        const CallScope scope([&](const Progress& progress) { last = progress; });
        EXPECT_FALSE(outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)).success);
    }
    const RequestDetails* const details = requestDetails(error);
    ASSERT_NE(details, nullptr);
    EXPECT_EQ(details->attempts, 4U);
    EXPECT_EQ(last.bytesDone, 10U) << "the last attempt's alone";
}

TEST_F(TokenRenewalTest, aTransferRenewsItToo)
{
    give(L"token-secret-2");
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").header("Authorization", oldToken).reply(401);
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").header("Authorization", newToken).reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().withoutHeader("Authorization");
    EXPECT_TRUE(outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)).success);
    expectClear(error);
    EXPECT_EQ(asked, 1);
}

TEST_F(TokenRenewalTest, aTransferThatIsRefusedTwiceFails)
{
    give(L"token-secret-2");
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").times(2).reply(401, "no");
    EXPECT_FALSE(outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)).success);
    expectHttpError(error, errorStatusValue, L"HttpError", L"no", 401);
}

TEST_F(TokenRenewalTest, aSignedAddressIsNeverTheReason)
{
    give(L"token-secret-2");
    platform.expect("PUT", "/file/new?fileName=n&filepath=p").reply(200, authority("r", atStore("/c")));
    store.expect("PUT", "/c").anyBody().reply(401, "the signature is old");
    EXPECT_FALSE(outcomeOf(HttpClient::uploadFile(error, localFile("u", "x"), L"n", L"p", false)).success);
    EXPECT_EQ(asked, 0);
}

TEST_F(TokenRenewalTest, nothingIsRepeatedInAnothersName)
{
    UserSession::SetTokenSource([this](const UserIdentity&) {
        ++asked;
        UserSession::SignIn({L"user-2", L"account-2", L"token-secret-3"});
        return std::wstring(L"token-secret-2");
    });
    expectWith(oldToken).reply(401, "expired");
    EXPECT_FALSE(publish());
    expectHttpError(error, errorStatusValue, L"HttpError", L"expired", 401);
    EXPECT_EQ(UserSession::GetInstance()->getAccessToken(), L"token-secret-3");
}

TEST_F(TokenRenewalTest, whoHasSignedOutStaysSignedOut)
{
    UserSession::SetTokenSource([](const UserIdentity&) {
        UserSession::SignOut();
        return std::wstring(L"token-secret-2");
    });
    expectWith(oldToken).reply(401, "expired");
    EXPECT_FALSE(publish());
    EXPECT_EQ(UserSession::GetInstance(), nullptr);
}

TEST_F(TokenRenewalTest, aSourceThatAsksThePlatformItselfDoesNotWaitForItself)
{
    UserSession::SetTokenSource([this](const UserIdentity&) {
        ++asked;
        ErrorCode own;
        EXPECT_FALSE(IWorkUnit::MarkPublish("ds-1", 1, L"", own));
        return std::wstring(L"token-secret-2");
    });
    expectWith(oldToken).times(2).reply(401);
    expectWith(newToken).reply(200, yes);
    EXPECT_TRUE(publish());
    EXPECT_EQ(asked, 1);
}

TEST_F(TokenRenewalTest, theNewTokenIsMaskedInTheLog)
{
    give(L"token-secret-2");
    expectWith(oldToken).reply(401);
    expectWith(newToken).reply(404, "about token-secret-2");
    publish();
    EXPECT_FALSE(log.holds(L"token-secret-2"));
}

} // namespace
} // namespace orlo::test
