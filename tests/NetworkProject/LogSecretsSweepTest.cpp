#include "WebFunctionRegistry.h"
#include "support/RawServer.h"
#include "support/WireTest.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/Frame/CallFrame.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace orlo::test {
namespace {

constexpr const char* secrets[] = {"secret-1", "secret%2D1", "u002dsecret", "perm-secret", "cGVybS1", "sig=abc", "sig='abc'", "token=t"};

// Bodies that hold the secrets in the ways in which a platform may repeat them.
constexpr const char* bodies[] = {
    R"({"code":40301,"message":"denied","token":"perm-secret","fileUrlWithSAS":"https://store/x?sig=abc&token=t"})",
    R"({"code":40301,"data":{"token":"perm-secret","url":"https://store/x?sig=abc&token=t"},"message":"Bearer token-secret-1 refused"})",
    R"({"code":40301,"data":[{"token":"perm-secret"}],"message":"see https://store/x?sig=abc&token=t, user token-secret-1"})",
    R"({"code":"10000","data":"{\"token\":\"perm-secret\",\"u\":\"https://store/x?sig=abc&token=t\",\"a\":\"token-secret-1\"}"})",
    R"(["token-secret-1","https://store/x?sig=abc&token=t",{"token":"perm-secret"}])",
    R"(<html>token-secret-1 https://store/x?sig=abc&token=t {"token":"perm-secret"}</html>)",
    R"({"code":40301,"message":"\u0074oken\u002dsecret-1, token%2Dsecret%2D1, Basic cGVybS1zZWNyZXQ6eA==, sig='abc' and token=t"})",
    R"({"token":"perm-secret","a":"token-secret-1","u":"https://store/x?sig=abc&token=t"} trailing)",
};

std::string rawStatus(int status, const std::string& body)
{
    Reply reply;
    reply.status = status;
    reply.body = body;
    return reply.wire("POST");
}

/// Runs every web function through the retry loop and the frame, as the operations do, against answers that repeat secrets.
/// What a failure leaves in the ErrorCode is logged by the next frame that finds it there. `inspect` is called for each answer,
/// as long as its host lives.
void runAllAgainstTellTales(const std::function<void()>& inspect)
{
    const RetryLimit one(1);
    const CallFrame frame(ORLO_HERE("orlo::Sample::Work"));
    for (const char* body : bodies) {
        for (const int status : {200, 201, 403, 500}) {
            RawServer server(RawAnswer::bytes(rawStatus(status, body)));
            const HostSetup host(server.url());
            for (const WebFunction& row : webFunctions()) {
                ErrorCode error;
                frame.run(error, [&] { return http::SendNormalRequestWithRetry(row.call, false, error); });
                frame.run(error, [&] { return row.call(error); });
                frame.runDirect(error, [&] { return row.call(error); });
            }
            inspect();
        }
    }
}

void expectNoSecretIn(const std::string& text)
{
    for (const char* secret : secrets)
        EXPECT_EQ(text.find(secret), std::string::npos) << secret;
}

TEST(LogSecretsSweep, noInstalledLoggerEverSeesASecret)
{
    const LogCapture log;
    runAllAgainstTellTales([] {});
    for (const char* secret : secrets)
        EXPECT_FALSE(log.holds(utils::toWstring(std::string(secret)))) << secret;
    EXPECT_TRUE(log.holds(L"response is not normal: ")) << "the bodies were logged";
    EXPECT_TRUE(log.holds(L"传入的ErrorCode，已有错误存在:")) << "the messages of the ErrorCodes were logged";
    EXPECT_TRUE(log.holds(L"***")) << "something was masked";
}

TEST(LogSecretsSweep, neitherTheDefaultLoggersFileNorItsStderrEverHoldsASecret)
{
    ILogManager::Install(nullptr);
    std::string files;
    testing::internal::CaptureStderr();
    runAllAgainstTellTales([&] { files += readFile(utils::makePath(utils::getLogPath()) / "orlo.log"); });
    const std::string console = testing::internal::GetCapturedStderr();
    for (const std::string& text : {files, console}) {
        expectNoSecretIn(text);
        EXPECT_NE(text.find("response is not normal: "), std::string::npos) << "the bodies were logged";
        EXPECT_NE(text.find("***"), std::string::npos) << "something was masked";
    }
}

} // namespace
} // namespace orlo::test
