#include "support/RawServer.h"
#include "support/WireTest.h"

#include <OrloNetwork/NetworkCommon.h>
#include <OrloProjectManager/NetworkProject/Call/WebCall.h>
#include <OrloProjectManager/NetworkProject/Projects/ProjectWeb.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>

namespace orlo::test {
namespace {

class TimeoutTest : public testing::Test
{
protected:
    RawServer server{RawAnswer::stall(rawOk(R"({"code":10000,"data":{"id":"p-1"}})"))};
    HostSetup host{server.url()};
    RetryLimit retries{1};
    LogCapture log;
    ErrorCode error;

    void timeoutIs(int seconds)
    {
        host.change([&](OrloConfig& config) { config.httpTimeoutSeconds = seconds; });
    }

    bool create()
    {
        http::ORLOHTTPPayloadProject wanted;
        wanted.name = L"a";
        wanted.status = ProjectStatus::Ongoing;
        http::ORLOHTTPPayloadProject created;
        return http::SendNormalRequestWithRetry(&OrloWebService::CreateProjectV2, false, error, created, wanted);
    }
};

TEST_F(TimeoutTest, aCreationGivesUpAfterTheTimeoutOfTheMomentAndIsRetried)
{
    timeoutIs(1);
    EXPECT_FALSE(create());
    expectHttpError(error, 3892314114, L"generic exception", silenceOf(server.url()), timeoutCode);
    EXPECT_EQ(server.connectionCount(), 2u);
    EXPECT_TRUE(log.has(L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[1]"));
}

TEST_F(TimeoutTest, aCreationReadsTheTimeoutAfreshEachTime)
{
    timeoutIs(1);
    EXPECT_FALSE(create());
    timeoutIs(30);
    server.release();
    EXPECT_TRUE(create());
    expectClear(error);
}

TEST_F(TimeoutTest, theOtherTimeoutIsReadOnceForEachProcess)
{
    const int first = timeoutOfFirstUse();
    timeoutIs(first + 7);
    EXPECT_EQ(timeoutOfFirstUse(), first);
    EXPECT_EQ(OrloConfigManager::Get()->httpTimeout(), first + 7);
}

TEST_F(TimeoutTest, aCallWithTheOtherTimeoutGivesUpAfterIt)
{
    timeoutIs(1);
    if (timeoutOfFirstUse() != 1)
        GTEST_SKIP() << "another test of this process was the first to use the time-out";
    timeoutIs(30);
    WebCall call(L"OrloWebService::Sample", service::project, methods::GET, L"/sample");
    call.withTimeoutOfFirstUse();
    try {
        call.send(error);
        FAIL() << "the answer never came, and nothing was thrown";
    }
    catch (const web::http::http_exception& e) {
        EXPECT_EQ(e.error_code(), std::errc::timed_out);
    }
}

} // namespace
} // namespace orlo::test
