#include "support/WireTest.h"

#include <BaseCommon/ErrorInfoManager.h>
#include <OrloNetwork/NetworkCommon.h>

#include <cpprest/http_msg.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace orlo::test {
namespace {

using http::SendNormalRequestWithRetry;

constexpr const wchar_t* exhausted = L"E [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded";
constexpr const wchar_t* retry1 = L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[1]";
constexpr const wchar_t* retry2 = L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[2]";
constexpr const wchar_t* retry3 = L"W [ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[3]";

class RetryTest : public testing::Test
{
protected:
    RetryLimit retries{3};
    LogCapture log;
    ErrorCode error;
    int attempts = 0;

    // Fails so many times as a web function does on an error status, then succeeds.
    auto failing(int times, int status = 503)
    {
        return [this, times, status](ErrorCode& ec) {
            if (++attempts > times)
                return true;
            ec.Assign(static_cast<long long>(0xFFFFFFFFE8000002ULL), std::make_shared<HttpError>(L"HttpError", L"busy", status, 0));
            return false;
        };
    }

    auto refusing()
    {
        return [this](ErrorCode& ec) {
            ++attempts;
            ec.Assign(0xE8000001, std::make_shared<GenericError>(L"data.name is empty"));
            return false;
        };
    }
};

TEST_F(RetryTest, aSuccessOnTheFirstAttemptLogsNothing)
{
    EXPECT_TRUE(SendNormalRequestWithRetry(failing(0), false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(RetryTest, handsTheArgumentsToTheWebFunctionInOrder)
{
    std::wstring out;
    const auto join = [](ErrorCode&, std::wstring& target, const std::wstring& text, int number) {
        target = text + std::to_wstring(number);
        return true;
    };
    const std::wstring text = L"n";
    EXPECT_TRUE(SendNormalRequestWithRetry(join, false, error, out, text, 7));
    EXPECT_EQ(out, L"n7");
}

TEST_F(RetryTest, everyPassStartsWithAClearErrorCode)
{
    error.Assign(0xE8000005, std::make_shared<GenericError>(L"earlier"));
    std::vector<bool> clearOnEntry;
    const auto fail = failing(2);
    const auto looking = [&](ErrorCode& ec) {
        clearOnEntry.push_back(ec.GetValue() == 0 && !ec.GetCategory());
        return fail(ec);
    };
    EXPECT_TRUE(SendNormalRequestWithRetry(looking, false, error));
    EXPECT_EQ(clearOnEntry, (std::vector<bool>{true, true, true}));
    expectClear(error);
}

TEST_F(RetryTest, countsEveryRetryInAWarning)
{
    EXPECT_TRUE(SendNormalRequestWithRetry(failing(2), false, error));
    EXPECT_EQ(attempts, 3);
    EXPECT_EQ(log.lines(), (Lines{retry1, retry2}));
}

TEST_F(RetryTest, makesOneAttemptMoreThanTheLimitAndThenReportsExhaustion)
{
    EXPECT_FALSE(SendNormalRequestWithRetry(failing(100), false, error));
    EXPECT_EQ(attempts, 4);
    EXPECT_EQ(log.lines(), (Lines{retry1, retry2, retry3, exhausted}));
    expectHttpError(error, -402653182, L"HttpError", L"busy", 503);
}

TEST_F(RetryTest, aSuccessAfterExactlyTheLimitOfRetriesIsReportedAsExhaustedAllTheSame)
{
    OrloErrorInfoManager::getInstance().SetLastError(L"before", static_cast<ErrorType>(1));
    EXPECT_TRUE(SendNormalRequestWithRetry(failing(3), false, error));
    EXPECT_EQ(attempts, 4);
    expectClear(error);
    EXPECT_EQ(log.lines(), (Lines{retry1, retry2, retry3, exhausted}));
    EXPECT_EQ(OrloErrorInfoManager::getInstance().GetLastErrorMessage(), L"Connection is not available with response code: 500");
}

TEST_F(RetryTest, exhaustionSetsTheLastErrorOfTheProcess)
{
    OrloErrorInfoManager::getInstance().SetLastError(L"before", static_cast<ErrorType>(1));
    SendNormalRequestWithRetry(failing(100), false, error);
    EXPECT_EQ(OrloErrorInfoManager::getInstance().GetLastErrorMessage(), L"Connection is not available with response code: 500");
    EXPECT_EQ(static_cast<int>(OrloErrorInfoManager::getInstance().GetLastErrorType()), 6);
}

TEST_F(RetryTest, aSuccessBelowTheLimitLeavesTheLastErrorOfTheProcessAlone)
{
    OrloErrorInfoManager::getInstance().SetLastError(L"before", static_cast<ErrorType>(1));
    SendNormalRequestWithRetry(failing(2), false, error);
    EXPECT_EQ(OrloErrorInfoManager::getInstance().GetLastErrorMessage(), L"before");
}

TEST_F(RetryTest, aGenericErrorIsNeverRetried)
{
    EXPECT_FALSE(SendNormalRequestWithRetry(refusing(), false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{});
    expectGenericError(error, 3892314113, L"GenericError", L"data.name is empty");
}

TEST_F(RetryTest, aFailureWithoutACategoryIsNotRetried)
{
    const auto quiet = [this](ErrorCode&) {
        ++attempts;
        return false;
    };
    EXPECT_FALSE(SendNormalRequestWithRetry(quiet, false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(RetryTest, aFailureThatDeservesNoOtherAttemptIsNotRetried)
{
    EXPECT_FALSE(SendNormalRequestWithRetry(failing(100, 404), false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{});
    expectHttpError(error, -402653182, L"HttpError", L"busy", 404);
}

TEST_F(RetryTest, aResultWithAnHttpErrorIsRetriedWhateverItIs)
{
    const auto trueWithError = [this](ErrorCode& ec) {
        if (++attempts == 1)
            ec.Assign(0xE8000002, std::make_shared<HttpError>(L"HttpError", L"busy", 503, 0));
        return true;
    };
    EXPECT_TRUE(SendNormalRequestWithRetry(trueWithError, false, error));
    EXPECT_EQ(attempts, 2);
}

class RetryLimitZeroTest : public RetryTest
{
protected:
    RetryLimit none{0};
};

TEST_F(RetryLimitZeroTest, evenASuccessLogsTheExhaustedLine)
{
    EXPECT_TRUE(SendNormalRequestWithRetry(failing(0), false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{exhausted});
    expectClear(error);
}

TEST_F(RetryLimitZeroTest, aFailureIsNotRetried)
{
    EXPECT_FALSE(SendNormalRequestWithRetry(failing(100), false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{exhausted});
}

TEST_F(RetryLimitZeroTest, aRefusedInputLogsTheExhaustedLineToo)
{
    EXPECT_FALSE(SendNormalRequestWithRetry(refusing(), false, error));
    EXPECT_EQ(attempts, 1);
    EXPECT_EQ(log.lines(), Lines{exhausted});
}

TEST_F(RetryTest, aLimitOfOneMakesTwoAttempts)
{
    const RetryLimit one(1);
    EXPECT_FALSE(SendNormalRequestWithRetry(failing(100), false, error));
    EXPECT_EQ(attempts, 2);
    EXPECT_EQ(log.lines(), (Lines{retry1, exhausted}));
}

TEST_F(RetryTest, theLimitIsReadOnceForEachCall)
{
    const auto raising = [this](ErrorCode& ec) {
        http::setRetryPolicy({50, 0});
        return failing(100)(ec);
    };
    EXPECT_FALSE(SendNormalRequestWithRetry(raising, false, error));
    EXPECT_EQ(attempts, 4);
}

TEST_F(RetryTest, aTransportFailureIsCaughtNamedAndRetried)
{
    const auto broken = [this](ErrorCode&) -> bool {
        ++attempts;
        throw web::http::http_exception(resetCode, "Failed to read HTTP status line");
    };
    EXPECT_FALSE(SendNormalRequestWithRetry(broken, false, error));
    EXPECT_EQ(attempts, 4);
    expectHttpError(error, 3892314114, L"generic exception", L"Failed to read HTTP status line", resetCode);
    const std::wstring caught = L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic "
                                L"exception caught: message[Failed to read HTTP status line]";
    EXPECT_EQ(log.lines(), (Lines{caught, retry1, caught, retry2, caught, retry3, caught, exhausted}));
}

TEST_F(RetryTest, aStandardExceptionGetsTheCode5555AndIsNotRetried)
{
    const auto broken = [this](ErrorCode&) -> bool {
        ++attempts;
        throw std::runtime_error("Malformed token\r");
    };
    EXPECT_FALSE(SendNormalRequestWithRetry(broken, false, error));
    EXPECT_EQ(attempts, 1);
    expectHttpError(error, 3892314114, L"generic exception", L"Malformed token", 5555);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - A generic "
                                 L"exception caught: message[Malformed token]"});
}

TEST_F(RetryTest, anythingElseThrownGetsTheCode5556AnEmptyMessageAndIsNotRetried)
{
    const auto broken = [this](ErrorCode&) -> bool {
        ++attempts;
        throw 7;
    };
    EXPECT_FALSE(SendNormalRequestWithRetry(broken, false, error));
    EXPECT_EQ(attempts, 1);
    expectHttpError(error, 3892314114, L"unknown exception", L"", 5556);
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::http::SendNormalRequestWithRetry OrloNetworkRetry::SendNormalRequestWithRetry - unknown "
                                 L"exception occurred"});
}

TEST_F(RetryTest, itsLogLinesNameTheirSource)
{
    SendNormalRequestWithRetry([](ErrorCode&) -> bool { throw 7; }, false, error);
    ASSERT_EQ(log.entries().size(), 1u);
    const LogEntry entry = log.entries().front();
    EXPECT_EQ(entry.source, "sdk-base/source/OrloNetwork/NetworkCommon.cpp");
    EXPECT_EQ(entry.function, "orlo::http::SendNormalRequestWithRetry");
    EXPECT_EQ(entry.tag, L"[ORLOSDK]");
    EXPECT_GT(entry.line, 0);
}

TEST_F(RetryTest, noMemoryInAWebFunctionIsAnExceptionLikeAnyOther)
{
    EXPECT_FALSE(SendNormalRequestWithRetry([](ErrorCode&) -> bool { throw std::bad_alloc(); }, false, error));
    expectHttpError(error, 3892314114, L"generic exception", L"std::bad_alloc", 5555);
}

TEST_F(RetryTest, anExceptionLeavesTheResultAsItWas)
{
    const auto broken = [](ErrorCode&) -> std::wstring { throw std::runtime_error("no luck"); };
    EXPECT_EQ(SendNormalRequestWithRetry(broken, std::wstring(L"kept"), error), L"kept");
    EXPECT_EQ(SendNormalRequestWithRetry([](ErrorCode&) -> int { throw 7; }, -1, error), -1);
}

TEST_F(RetryTest, anExceptionAfterAnAttemptThatReturnedLeavesThatAttemptsResult)
{
    const auto firstReturns = [this](ErrorCode& ec) -> std::wstring {
        if (++attempts > 1)
            throw std::runtime_error("no luck");
        ec.Assign(0xE8000002, std::make_shared<HttpError>(L"HttpError", L"busy", 503, 0));
        return L"first";
    };
    EXPECT_EQ(SendNormalRequestWithRetry(firstReturns, std::wstring(L"failure"), error), L"first");
    EXPECT_EQ(attempts, 2);
    expectHttpError(error, 3892314114, L"generic exception", L"no luck", 5555);
}

TEST_F(RetryTest, aSuccessAfterAnExceptionReplacesTheResultAndClearsTheError)
{
    const auto second = [this](ErrorCode&) -> std::wstring {
        if (++attempts == 1)
            throw web::http::http_exception(110, "Failed to connect to any resolved endpoint");
        return L"second";
    };
    EXPECT_EQ(SendNormalRequestWithRetry(second, std::wstring(), error), L"second");
    expectClear(error);
}

TEST(RetryPolicy, isThreeRetriesASecondApartUnlessTheHostSaysOtherwise)
{
    http::setRetryPolicy({});
    EXPECT_EQ(http::getRetryLimitation(), 3u);
    EXPECT_EQ(http::getRetryInterval(), 1u);
    http::setRetryPolicy({5, 2});
    EXPECT_EQ(http::getRetryLimitation(), 5u);
    EXPECT_EQ(http::getRetryInterval(), 2u);
    http::setRetryPolicy({});
}

struct Verdict
{
    const wchar_t* name;
    const wchar_t* message;
    int code;
    bool again;
};

class RetryVerdictTest : public testing::TestWithParam<Verdict>
{};

TEST_P(RetryVerdictTest, followsTheTable)
{
    const Verdict& row = GetParam();
    ErrorCode error;
    const HttpError failure(row.name, row.message, row.code, 0);
    EXPECT_EQ(http::CalculateIsNeedRetryRequest(&failure, error), row.again) << row.code;
}

INSTANTIATE_TEST_SUITE_P(Statuses, RetryVerdictTest,
                         testing::Values(Verdict{L"HttpError", L"", 408, true}, Verdict{L"HttpError", L"", 429, true},
                                         Verdict{L"HttpError", L"", 500, true}, Verdict{L"HttpError", L"", 502, true},
                                         Verdict{L"HttpError", L"", 503, true}, Verdict{L"HttpError", L"", 504, true},
                                         Verdict{L"HttpError", L"", 400, false}, Verdict{L"HttpError", L"", 401, false},
                                         Verdict{L"HttpError", L"", 403, false}, Verdict{L"HttpError", L"", 404, false},
                                         Verdict{L"HttpError", L"", 409, false}, Verdict{L"HttpError", L"", 501, false},
                                         Verdict{L"HttpError", L"", 505, false}, Verdict{L"HttpError", L"", 0, false}));

INSTANTIATE_TEST_SUITE_P(Transport, RetryVerdictTest,
                         testing::Values(Verdict{L"generic exception", L"Failed to connect to any resolved endpoint", 111, true},
                                         Verdict{L"generic exception", L"Failed to connect to any resolved endpoint", 113, true},
                                         Verdict{L"generic exception", L"Failed to read HTTP status line", 104, true},
                                         Verdict{L"generic exception", L"Failed to read HTTP status line", 110, true},
                                         Verdict{L"generic exception", L"Error resolving address", 1, true},
                                         Verdict{L"generic exception", L"Failed to read response body", 2, true},
                                         Verdict{L"generic exception", L"Invalid HTTP status line", 0, false},
                                         Verdict{L"generic exception", L"Error in SSL handshake", 337047686, false}));

INSTANTIATE_TEST_SUITE_P(Exceptions, RetryVerdictTest,
                         testing::Values(Verdict{L"generic exception", L"Malformed token", 5555, false},
                                         Verdict{L"HttpError", L"no luck", 5555, false}, Verdict{L"unknown exception", L"", 5556, false}));

TEST(RetryVerdict, aMissingFailureDeservesNoOtherAttempt)
{
    ErrorCode error;
    EXPECT_FALSE(http::CalculateIsNeedRetryRequest(nullptr, error));
}

} // namespace
} // namespace orlo::test
