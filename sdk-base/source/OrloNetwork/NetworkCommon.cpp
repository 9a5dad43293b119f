#include "NetworkCommon.h"

#include "WebRequest.h"

#include <BaseCommon/ErrorInfoManager.h>
#include <BaseCommon/Interruption.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/ILogManager.h>

#include <cpprest/http_msg.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace orlo::http {

namespace {

// No std::wstring: a call on another thread may still log while the statics of the process go.
constexpr const wchar_t* tag = L"[ORLOSDK]";

std::atomic<unsigned> retryLimit{RetryPolicy{}.limit};
std::atomic<unsigned> retryInterval{RetryPolicy{}.intervalSeconds};

void logCaught(int line, const std::wstring& message)
{
    ILogManager::Get()->LogErrorAt(__FILE__, line, "orlo::http::SendNormalRequestWithRetry",
                                   L"OrloNetworkRetry::SendNormalRequestWithRetry - " + message, tag);
}

void assignCaught(ErrorCode& errorCode, const char* what, int code)
{
    const std::wstring text = utils::toWstringTrimTrailingCarriageReturn(what);
    errorCode.Assign(error::exception, std::make_shared<HttpError>(L"generic exception", text, code, 0));
    logCaught(__LINE__, L"A generic exception caught: message[" + text + L"]");
}

void attemptOnce(ErrorCode& errorCode, const std::function<void()>& attempt)
{
    try {
        attempt();
    }
    catch (const web::http::http_exception& e) {
        assignCaught(errorCode, e.what(), e.error_code().value());
    }
    catch (const std::exception& e) {
        assignCaught(errorCode, e.what(), 5555);
    }
    catch (...) {
        errorCode.Assign(error::exception, std::make_shared<HttpError>(L"unknown exception", L"", 5556, 0));
        logCaught(__LINE__, L"unknown exception occurred");
    }
}

/// Returns: whether the work still goes on.
bool pause(std::chrono::seconds length)
{
    if (const auto interruption = Interruption::current())
        return !interruption->waitFor(length);
    std::this_thread::sleep_for(length);
    return true;
}

void reportExhausted()
{
    ILogManager::Get()->LogError(L"[ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded");
    OrloErrorInfoManager::getInstance().SetLastError(L"Connection is not available with response code: 500", ErrorType::connection);
}

bool isTransientStatus(int status)
{
    switch (status) {
    case 408:
    case 429:
    case 500:
    case 502:
    case 503:
    case 504:
        return true;
    default:
        return false;
    }
}

/// Code 0 is an answer that can't be read; a certificate that is refused now is refused the next time too.
bool isTransientTransportFailure(const HttpError& failure)
{
    const int code = failure.GetCode();
    return code != 0 && code != 5555 && code != 5556 && failure.GetErrorMessage().find(L"SSL handshake") == std::wstring::npos;
}

} // namespace

void setRetryPolicy(const RetryPolicy& policy)
{
    retryLimit = policy.limit;
    retryInterval = policy.intervalSeconds;
}

unsigned int getRetryLimitation()
{
    return retryLimit;
}

unsigned int getRetryInterval()
{
    return retryInterval;
}

bool CalculateIsNeedRetryRequest(const HttpError* httpError, ErrorCode&)
{
    if (!httpError)
        return false;
    if (httpError->GetName() == L"generic exception")
        return isTransientTransportFailure(*httpError);
    return httpError->GetName() == L"HttpError" && isTransientStatus(httpError->GetCode());
}

namespace detail {

void attemptWithRetry(ErrorCode& errorCode, const std::function<void()>& attempt)
{
    const unsigned limit = getRetryLimitation();
    const std::chrono::seconds interval(getRetryInterval());
    unsigned repeated = 0;
    while (true) {
        errorCode.Clear();
        attemptOnce(errorCode, attempt);
        const auto failure = std::dynamic_pointer_cast<HttpError>(errorCode.GetCategory());
        if (!failure || repeated == limit || !CalculateIsNeedRetryRequest(failure.get(), errorCode))
            break;
        ++repeated;
        ILogManager::Get()->LogWarning(L"[ORLOSDK]OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[" +
                                       std::to_wstring(repeated) + L"]");
        if (!pause(interval))
            break;
    }
    // Intended: a call that succeeds with its very last attempt is reported as exhausted all the same.
    if (repeated == limit)
        reportExhausted();
}

} // namespace detail

} // namespace orlo::http
