#include "PermissionWireTest.h"
#include "support/RawServer.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/PermissionFileHelper.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/ILogManager.h>

#include <gtest/gtest.h>

#include <functional>

// A permission token goes in paths and queries, and answers repeat it; it stands in the token file and nowhere else.
namespace orlo::test {
namespace {

constexpr const char* secret = "perm-secret-77";

constexpr const char* answers[] = {
    R"({"code":10000,"data":{"token":"perm-secret-77","monitor":2}})",
    R"({"code":10000,"data":[{"dsId":"d-1","monitor":2,"token":"perm-secret-77"}]})",
    R"({"code":10000,"data":[{"token":"perm-secret-77"},{"token":"perm-secret-77"}]})",
    R"({"code":10000,"data":["perm-secret-77"]})",
    R"({"code":40401,"msg":"perm-secret-77 is stale, see /dataset/monitor/perm-secret-77/release?force=true"})",
    R"({"code":40401,"msg":"perm%2Dsecret%2D77 and perm\u002dsecret\u002d77"})",
    R"(<html>/dataset/monitor/perm-secret-77/release</html>)",
};

/// All operations, with the token kept, against platforms that repeat it; and what a next frame logs of the ErrorCode.
void askTellTales(const std::function<void()>& inspect)
{
    const RetryLimit one(1);
    for (const char* body : answers) {
        for (const int status : {200, 201, 403, 500}) {
            Reply reply;
            reply.status = status;
            reply.body = body;
            RawServer server(RawAnswer::bytes(reply.wire("POST")));
            const HostSetup host(server.url());
            auto& tokens = *utils::PermissionFileHelper::GetInstance();
            ASSERT_TRUE(tokens.WriteTokenToFile("user-1", "d-1", secret));
            std::string result;
            ErrorCode error;
            IDatasetPermission::GetDatasetPermission("d-1", result, error);
            IDatasetPermission::AskForReadPermission("d-1", result, error);
            IDatasetPermission::IsEditTokenValid(L"d-1", error);
            IDatasetPermission::ReleaseDatasetPermissionForce(L"d-1", error);
            IDatasetPermission::ReleaseDatasetPermission("d-1", result, error, false);
            IDatasetPermission::ReleaseDatasetPermissionForce(L"d-1", error);
            if (error.GetCategory() && error.GetValue() == exceptionValue) {
                EXPECT_EQ(error.GetErrorMessage().find(utils::toWstring(std::string(secret))), std::wstring::npos);
            }
            inspect();
        }
    }
}

TEST(PermissionSecrets, noInstalledLoggerEverSeesAToken)
{
    const LogCapture log;
    askTellTales([] {});
    EXPECT_FALSE(log.holds(L"perm-secret-77"));
    EXPECT_FALSE(log.holds(L"secret%2D77"));
    EXPECT_FALSE(log.holds(L"u002d77"));
    EXPECT_TRUE(log.holds(L"response is not normal: ")) << "answers were logged";
    EXPECT_TRUE(log.holds(L"***")) << "and something in them was masked";
}

TEST(PermissionSecrets, noFileButThatOfTheTokensHoldsOne)
{
    ILogManager::Install(nullptr);
    testing::internal::CaptureStderr();
    askTellTales([] {
        const std::filesystem::path root = utils::makePath(utils::getLocalAppDataPath());
        for (const std::string& name : filesBelow(root)) {
            const bool isTokenFile = name.find("DatasetTokens.json") != std::string::npos;
            EXPECT_TRUE(isTokenFile || readFile(root / std::filesystem::u8path(name)).find(secret) == std::string::npos) << name;
        }
        const std::filesystem::path log = utils::makePath(utils::getLogPath()) / "orlo.log";
        EXPECT_EQ(readFile(log).find(secret), std::string::npos);
        EXPECT_NE(readFile(log).find("[IDataset::GetDatasetPermission]"), std::string::npos) << "something was logged";
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr().find(secret), std::string::npos);
}

} // namespace
} // namespace orlo::test
