#include "ChainProbe.h"

#include <BaseCommon/HttpMessage.h>
#include <OrloNetwork/NetworkCommon.h>

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

using http::CalculateIsNeedRetryRequest;
using http::HttpMessage;
using http::ParseErrorBody;

bool needsRetry(const HttpError& failure)
{
    ErrorCode error;
    return CalculateIsNeedRetryRequest(&failure, error);
}

bool statusNeedsRetry(int status)
{
    return needsRetry(HttpError(L"HttpError", L"body", status, 0));
}

bool transportNeedsRetry(int code, const std::wstring& text = L"Failed to connect to any resolved endpoint")
{
    return needsRetry(HttpError(L"generic exception", text, code, 0));
}

TEST(RetryPolicyTest, isThreeRepeatsASecondApartUnlessTold)
{
    EXPECT_EQ(http::getRetryLimitation(), 3U);
    EXPECT_EQ(http::getRetryInterval(), 1U);
}

TEST(RetryPolicyTest, isAsTheHostSetIt)
{
    const RetryPolicyGuard policy({7, 2});
    EXPECT_EQ(http::getRetryLimitation(), 7U);
    EXPECT_EQ(http::getRetryInterval(), 2U);
}

TEST(RetryRuleTest, repeatsTheStatusesThatPass)
{
    for (const int status : {408, 429, 500, 502, 503, 504})
        EXPECT_TRUE(statusNeedsRetry(status)) << status;
}

TEST(RetryRuleTest, repeatsNoOtherStatus)
{
    for (const int status : {0, 200, 201, 302, 400, 401, 403, 404, 409, 410, 413, 501, 505, 507, 511, 599})
        EXPECT_FALSE(statusNeedsRetry(status)) << status;
}

TEST(RetryRuleTest, repeatsFailuresOfTheTransport)
{
    for (const int code : {1, 2, 32, 103, 104, 110, 113})
        EXPECT_TRUE(transportNeedsRetry(code)) << code;
}

TEST(RetryRuleTest, doesNotRepeatAnAnswerThatCantBeRead)
{
    for (const int code : {0, 5555, 5556})
        EXPECT_FALSE(transportNeedsRetry(code)) << code;
}

TEST(RetryRuleTest, doesNotRepeatARefusedCertificate)
{
    EXPECT_FALSE(transportNeedsRetry(167772294, L"Error in SSL handshake"));
}

TEST(RetryRuleTest, anOperationsOwnExceptionAndAnUnknownOneAreNotRepeated)
{
    EXPECT_FALSE(needsRetry(HttpError(L"HttpError", L"what", 5555, 0)));
    EXPECT_FALSE(needsRetry(HttpError(L"unknown exception", L"", 5556, 0)));
}

TEST(RetryRuleTest, withoutAnErrorNothingIsRepeated)
{
    ErrorCode error;
    EXPECT_FALSE(CalculateIsNeedRetryRequest(nullptr, error));
}

HttpMessage messageFrom(const std::wstring& body)
{
    HttpMessage message;
    message.code = -7;
    message.message = L"as it was";
    ParseErrorBody(message, body);
    return message;
}

TEST(ParseErrorBodyTest, readsTheCodeAndTheWords)
{
    const HttpMessage message = messageFrom(L"{\"code\":20004,\"message\":\"修订号冲突 😀\",\"data\":null}");
    EXPECT_EQ(message.code, 20004);
    EXPECT_EQ(message.message, L"修订号冲突 😀");
}

TEST(ParseErrorBodyTest, anEnvelopeWithoutWordsHasNone)
{
    const HttpMessage message = messageFrom(L"{\"code\":20004}");
    EXPECT_EQ(message.code, 20004);
    EXPECT_EQ(message.message, L"");
}

TEST(ParseErrorBodyTest, leavesTheMessageAloneWhereThereIsNoEnvelope)
{
    for (const wchar_t* body : {L"", L"Bad Gateway", L"[1]", L"null", L"{\"code\":\"20004\",\"message\":7}", L"{\"message\":null}",
                                L"{\"code\":1.5}", L"{\"code\":20004"}) {
        const HttpMessage message = messageFrom(body);
        EXPECT_EQ(message.code, -7) << body;
        EXPECT_EQ(message.message, L"as it was") << body;
    }
}

TEST(ParseErrorBodyTest, wordsAreReadWithoutACodeToo)
{
    for (const wchar_t* body : {L"{\"message\":\"修订号冲突\"}", L"{\"code\":\"20004\",\"message\":\"修订号冲突\"}",
                                L"{\"code\":null,\"message\":\"修订号冲突\"}", L"{\"code\":1.5,\"message\":\"修订号冲突\"}"}) {
        const HttpMessage message = messageFrom(body);
        EXPECT_EQ(message.code, -7) << body;
        EXPECT_EQ(message.message, L"修订号冲突") << body;
    }
}

TEST(ParseErrorBodyTest, survivesABodyThatIsNestedWithoutEnd)
{
    EXPECT_EQ(messageFrom(std::wstring(100000, L'[')).message, L"as it was");
}

TEST(ParseErrorBodyTest, aCodeBeyondThirtyTwoBitsIsNoCode)
{
    EXPECT_EQ(messageFrom(L"{\"code\":4294967296,\"message\":\"m\"}").code, -7);
}

} // namespace
} // namespace orlo::test
