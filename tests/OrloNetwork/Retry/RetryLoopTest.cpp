#include "OrloNetwork/ChainProbe.h"
#include "support/LogCapture.h"

#include <BaseCommon/ErrorInfoManager.h>
#include <OrloNetwork/NetworkCommon.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace orlo::test {
namespace {

using Lines = std::vector<std::wstring>;

const std::wstring exhausted = L"E [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded";

std::wstring attemptLine(int number)
{
    return L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[" + std::to_wstring(number) + L"]";
}

class RetryLoopTest : public testing::Test
{
protected:
    /// A web function which is told the number of its attempt, counted from 1.
    int send(const std::function<int(ErrorCode&, int)>& webFunction)
    {
        return http::SendNormalRequestWithRetry([&](ErrorCode& ec) { return webFunction(ec, ++attempts); }, -1, error);
    }

    std::shared_ptr<HttpError> failure() const { return std::dynamic_pointer_cast<HttpError>(error.GetCategory()); }

    RetryPolicyGuard policy{{2, 0}};
    LogCapture log;
    ErrorCode error;
    int attempts = 0;
};

TEST_F(RetryLoopTest, aSuccessAtOnceLogsNothing)
{
    EXPECT_EQ(send([](ErrorCode&, int) { return 7; }), 7);
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(RetryLoopTest, anEarlierErrorIsClearedBeforeEachAttempt)
{
    assignStatus(error, 500);
    send([](ErrorCode& ec, int attempt) {
        EXPECT_TRUE(ec.isClear());
        EXPECT_EQ(ec.GetCategory(), nullptr);
        if (attempt == 1)
            assignStatus(ec, 500);
        return 0;
    });
    EXPECT_EQ(attempts, 2);
    EXPECT_TRUE(error.isClear());
}

TEST_F(RetryLoopTest, givesUpAfterTheLimit)
{
    const int result = send([](ErrorCode& ec, int attempt) {
        assignStatus(ec, 503);
        return attempt;
    });
    EXPECT_EQ(result, 3);
    EXPECT_EQ(attempts, 3);
    EXPECT_EQ(log.lines(), (Lines{attemptLine(1), attemptLine(2), exhausted}));
    ASSERT_NE(failure(), nullptr);
    EXPECT_EQ(failure()->GetCode(), 503);
}

TEST_F(RetryLoopTest, aSuccessWithTheVeryLastAttemptIsReportedAsExhausted)
{
    send([](ErrorCode& ec, int attempt) {
        if (attempt < 3)
            assignStatus(ec, 503);
        return 0;
    });
    EXPECT_EQ(log.lines(), (Lines{attemptLine(1), attemptLine(2), exhausted}));
    EXPECT_TRUE(error.isClear());
}

TEST_F(RetryLoopTest, aFailureForGoodIsNotRepeated)
{
    send([](ErrorCode& ec, int) {
        assignStatus(ec, 404);
        return 0;
    });
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(error.GetValue(), static_cast<long long>(0xFFFFFFFFE8000002));
}

TEST_F(RetryLoopTest, aGenericErrorLeavesTheLoopAtOnce)
{
    send([](ErrorCode& ec, int) {
        ec.Assign(error::badInput, std::make_shared<GenericError>(L"data.name is empty"));
        return 0;
    });
    EXPECT_EQ(attempts, 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(RetryLoopTest, withALimitOfZeroAFailureIsExhaustedAtOnce)
{
    http::setRetryPolicy({0, 0});
    send([](ErrorCode& ec, int) {
        assignStatus(ec, 404);
        return 0;
    });
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{exhausted});
}

TEST_F(RetryLoopTest, withALimitOfZeroEvenASuccessIsReportedAsExhausted)
{
    http::setRetryPolicy({0, 0});
    EXPECT_EQ(send([](ErrorCode&, int) { return 7; }), 7);
    EXPECT_EQ(log.lines(), Lines{exhausted});
}

TEST_F(RetryLoopTest, aTransportFailureIsCaughtAndRepeated)
{
    EXPECT_EQ(send([](ErrorCode&, int) -> int {
                  throw web::http::http_exception(std::error_code(104, std::generic_category()), "Failed to read HTTP status line");
              }),
              -1);
    EXPECT_EQ(attempts, 3);
    ASSERT_NE(failure(), nullptr);
    EXPECT_EQ(error.GetValue(), 0xE8000002LL);
    EXPECT_EQ(failure()->GetName(), L"generic exception");
    EXPECT_EQ(failure()->GetErrorMessage(), L"Failed to read HTTP status line");
    EXPECT_EQ(failure()->GetCode(), 104);
    EXPECT_EQ(failure()->GetSubcode(), 0);
    EXPECT_EQ(log.count(L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic exception "
                        L"caught: message[Failed to read HTTP status line]"),
              3U);
}

TEST_F(RetryLoopTest, anotherExceptionIsCaughtAndNotRepeated)
{
    EXPECT_EQ(send([](ErrorCode&, int) -> int { throw std::runtime_error("Malformed token\r\n"); }), -1);
    EXPECT_EQ(attempts, 1);
    ASSERT_NE(failure(), nullptr);
    EXPECT_EQ(failure()->GetName(), L"generic exception");
    EXPECT_EQ(failure()->GetErrorMessage(), L"Malformed token");
    EXPECT_EQ(failure()->GetCode(), 5555);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic "
                                  L"exception caught: message[Malformed token]"}));
}

TEST_F(RetryLoopTest, whatIsNoExceptionIsCaughtToo)
{
    EXPECT_EQ(send([](ErrorCode&, int) -> int { throw 42; }), -1);
    EXPECT_EQ(attempts, 1);
    ASSERT_NE(failure(), nullptr);
    EXPECT_EQ(error.GetValue(), 0xE8000002LL);
    EXPECT_EQ(failure()->GetName(), L"unknown exception");
    EXPECT_EQ(failure()->GetErrorMessage(), L"");
    EXPECT_EQ(failure()->GetCode(), 5556);
    EXPECT_EQ(log.lines(), (Lines{L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - unknown "
                                  L"exception occurred"}));
}

TEST_F(RetryLoopTest, anExceptionKeepsTheResultOfAnEarlierAttempt)
{
    const int result = send([](ErrorCode& ec, int attempt) {
        if (attempt == 2)
            throw std::runtime_error("broken");
        assignStatus(ec, 500);
        return 7;
    });
    EXPECT_EQ(result, 7);
    EXPECT_EQ(attempts, 2);
}

TEST_F(RetryLoopTest, readsThePolicyOnce)
{
    send([](ErrorCode& ec, int) {
        http::setRetryPolicy({9, 3600});
        assignStatus(ec, 500);
        return 0;
    });
    EXPECT_EQ(attempts, 3);
}

TEST_F(RetryLoopTest, handsItsArgumentsToEveryAttempt)
{
    std::vector<int> out;
    const auto webFunction = [](ErrorCode& ec, std::vector<int>& numbers, const std::wstring& text) {
        numbers.push_back(static_cast<int>(text.size()));
        if (numbers.size() == 1)
            assignStatus(ec, 500);
        return true;
    };
    EXPECT_TRUE(http::SendNormalRequestWithRetry(webFunction, false, error, out, std::wstring(L"abc")));
    EXPECT_EQ(out, (std::vector<int>{3, 3}));
}

TEST_F(RetryLoopTest, exhaustionIsTheLastErrorOfTheProcess)
{
    send([](ErrorCode& ec, int) {
        assignStatus(ec, 500);
        return 0;
    });
    EXPECT_EQ(OrloErrorInfoManager::getInstance().GetLastErrorMessage(), L"Connection is not available with response code: 500");
}

} // namespace
} // namespace orlo::test
