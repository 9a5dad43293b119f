#pragma once

#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/HttpMessage.h>
#include <OrloNetwork/Export.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orlo::http {

/// How often a failed request is repeated, and how long the pause before each repetition is.
struct RetryPolicy
{
    unsigned limit = 3;
    unsigned intervalSeconds = 1;
};

/// Takes effect for calls that start afterwards. Any thread.
ORLO_NETWORK_API void setRetryPolicy(const RetryPolicy& policy);
ORLO_NETWORK_API unsigned int getRetryLimitation();
ORLO_NETWORK_API unsigned int getRetryInterval();

/// Pauses that grow, instead of the interval of the RetryPolicy, whose limit holds all the same.
struct BackoffPolicy
{
    std::chrono::milliseconds firstPause{500};
    double factor = 2; ///< from one pause to the next; at least 1
    std::chrono::milliseconds longestPause{30000};
    /// 0 to 1: up to so much of each pause is left out, at random, so that many clients don't come back all at once.
    double jitter = 0.5;
    /// A pause that the platform asks for (Retry-After, in seconds or as a date) is made as it says; but none beyond the longest.
    bool heedsRetryAfter = true;
};

/// Takes effect for calls that start afterwards; none: the interval again, which is the default.   Threads: any.
ORLO_NETWORK_API void setBackoffPolicy(const std::optional<BackoffPolicy>& policy);

/// Whether a failure deserves another attempt: the statuses 408, 429, 500, 502, 503 and 504, and failures of the
/// transport (connect, reset, time-out). Other statuses, refused certificates and answers that can't be read do not.
ORLO_NETWORK_API bool CalculateIsNeedRetryRequest(const HttpError* httpError, ErrorCode& errorCode);

/// Reads the platform's words out of the body of an error answer, which an ErrorCode carries as its message.
/// Text that is no JSON object leaves the message alone. Never throws.
ORLO_NETWORK_API void ParseErrorBody(HttpMessage& message, const std::wstring& body);

namespace detail {
ORLO_NETWORK_API void attemptWithRetry(ErrorCode& errorCode, const std::function<void()>& attempt);
}

/// Runs a web function until it succeeds, fails for good, or the retry limit is used up: limit + 1 attempts at the
/// most, with the policy's pause between them on the calling thread. `failure` is the result when no attempt returned one.
/// Errors: those of the last attempt; an exception becomes 0xE8000002 and never leaves.
template <class WebFunction, class Result, class... Args>
Result SendNormalRequestWithRetry(WebFunction&& webFunction, Result failure, ErrorCode& errorCode, Args&&... args)
{
    Result result = std::move(failure);
    detail::attemptWithRetry(errorCode, [&] { result = std::invoke(webFunction, errorCode, args...); });
    return result;
}

} // namespace orlo::http
