#include "support/LogCapture.h"

#include <OrloAuth/UserSession.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace orlo::test {
namespace {

class UserSessionTest : public testing::Test
{
protected:
    ~UserSessionTest() override { UserSession::SignOut(); }
};

TEST_F(UserSessionTest, isNullWhenNobodyIsSignedIn)
{
    EXPECT_EQ(UserSession::GetInstance(), nullptr);
}

TEST_F(UserSessionTest, tellsWhoIsSignedIn)
{
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    const auto session = UserSession::GetInstance();
    ASSERT_NE(session, nullptr);
    EXPECT_EQ(session->GetId(), L"user-1");
    EXPECT_EQ(session->getAccountId(), L"account-1");
    EXPECT_EQ(session->getAccessToken(), L"token-secret-1");
}

TEST_F(UserSessionTest, aSecondSignInReplacesTheFirst)
{
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    const auto first = UserSession::GetInstance();
    UserSession::SignIn({L"user-2", L"account-2", L"token-secret-2"});
    EXPECT_EQ(UserSession::GetInstance()->GetId(), L"user-2");
    EXPECT_EQ(first->GetId(), L"user-1");
}

TEST_F(UserSessionTest, signingOutLeavesNobody)
{
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    UserSession::SignOut();
    EXPECT_EQ(UserSession::GetInstance(), nullptr);
}

TEST_F(UserSessionTest, theAccessTokenIsMaskedInTheLogEvenAfterSigningOut)
{
    const LogCapture log;
    UserSession::SignIn({L"user-1", L"account-1", L"token-secret-1"});
    ILogManager::Get()->LogInfo(L"signed in with token-secret-1.");
    UserSession::SignOut();
    ILogManager::Get()->LogInfo(L"signed out with token-secret-1.");
    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"I signed in with ***.", L"I signed out with ***."}));
}

TEST_F(UserSessionTest, signingInWithoutATokenMasksNothing)
{
    const LogCapture log;
    UserSession::SignIn({L"user-1", L"account-1", L""});
    ILogManager::Get()->LogInfo(L"user-1 is here");
    EXPECT_TRUE(log.has(L"I user-1 is here"));
}

TEST_F(UserSessionTest, isReadWhileOthersSignInAndOut)
{
    std::atomic<bool> done{false};
    std::atomic<int> mixed{0};
    std::thread reader([&] {
        while (!done) {
            if (const auto session = UserSession::GetInstance())
                mixed += session->GetId().back() != session->getAccountId().back();
        }
    });
    for (int i = 0; i < 1000; ++i) {
        UserSession::SignIn(i % 2 == 0 ? UserIdentity{L"user-1", L"account-1", L"token-secret-1"}
                                       : UserIdentity{L"user-2", L"account-2", L"token-secret-2"});
        if (i % 10 == 0)
            UserSession::SignOut();
    }
    done = true;
    reader.join();
    EXPECT_EQ(mixed, 0);
}

} // namespace
} // namespace orlo::test
