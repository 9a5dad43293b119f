#include "HostSetup.h"

#include <BaseCommon/LocalFolders.h>
#include <OrloAuth/UserSession.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

TEST(HostSetup, pointsEveryServiceToTheServerAndSignsAUserIn)
{
    const HostSetup host("http://127.0.0.1:4711");
    for (const wchar_t* key : {L"project", L"structure", L"module", L"message", L"authorization", L"slproxy"})
        EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(key), L"http://127.0.0.1:4711");
    ASSERT_NE(UserSession::GetInstance(), nullptr);
    EXPECT_EQ(UserSession::GetInstance()->GetId(), L"user-1");
    EXPECT_EQ(UserSession::GetInstance()->getAccountId(), L"account-1");
    EXPECT_EQ(UserSession::GetInstance()->getAccessToken(), L"token-secret-1");
}

TEST(HostSetup, keepsTheLocalFoldersInItsOwnFolder)
{
    const HostSetup host("http://127.0.0.1:4711");
    EXPECT_EQ(utils::getLogPath().rfind(host.folder().wide(), 0), 0u);
}

TEST(HostSetup, leavesNothingBehind)
{
    std::filesystem::path folder;
    {
        const HostSetup host("http://127.0.0.1:4711");
        folder = host.folder().path();
        writeFile(host.folder().path("left.txt"), "x");
    }
    EXPECT_FALSE(std::filesystem::exists(folder));
    EXPECT_EQ(UserSession::GetInstance(), nullptr);
    EXPECT_EQ(OrloConfigManager::Get()->GetServiceUrl(L"project"), L"");
}

} // namespace
} // namespace orlo::test
