#include "NetworkCommon.h"

#include "RequestNote.h"
#include "Retry/Attempts.h"
#include "Retry/Patience.h"
#include "Retry/TransportCode.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/ErrorInfoManager.h>
#include <BaseCommon/Interruption.h>
#include <OrloLogging/Log.h>
#include <OrloLogging/NotOnTerminal.h>

#include <chrono>
#include <thread>

namespace orlo::http {

namespace {

void logCaught(const CallSite& site, const std::wstring& message)
{
    log::errorAt(site, L"OrloNetworkRetry::SendNormalRequestWithRetry - " + message);
}

void attemptOnce(ErrorCode& errorCode, const std::function<void()>& attempt)
{
    constexpr const char* function = "orlo::http::SendNormalRequestWithRetry";
    try {
        attempt();
    }
    catch (...) {
        const utils::Caught caught = utils::caught();
        if (caught.isUnknown()) {
            errorCode.Assign(error::exception, makeHttpError(L"unknown exception", L"", caught.code, 0));
            return logCaught(ORLO_HERE(function), L"unknown exception occurred");
        }
        const int code = transportCodeOfCaught().value_or(caught.code);
        errorCode.Assign(error::exception, errorOfCaught(L"generic exception", caught.text, code));
        logCaught(ORLO_HERE(function), L"A generic exception caught: message[" + caught.text + L"]");
    }
}

/// Returns: whether the work still goes on.
bool pause(std::chrono::milliseconds length)
{
    if (const auto interruption = Interruption::current())
        return !interruption->waitFor(length);
    std::this_thread::sleep_for(length);
    return true;
}

void reportExhausted()
{
    log::error(L"OrloNetworkRetry::SendNormalRequestWithRetry - max retry attempts exceeded");
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
    const Patience patience = Patience::now();
    const auto attempts = std::make_shared<Attempts>();
    const Attempts::Scope scope(attempts);
    unsigned repeated = 0;
    while (true) {
        errorCode.Clear();
        attempts->begin();
        attemptOnce(errorCode, attempt);
        const auto failure = std::dynamic_pointer_cast<HttpError>(errorCode.GetCategory());
        if (!failure || repeated == patience.limit || !CalculateIsNeedRetryRequest(failure.get(), errorCode))
            break;
        ++repeated;
        log::warning(L"OrloNetworkRetry::SendNormalRequestWithRetry - retry attempts[" + std::to_wstring(repeated) + L"]");
        if (!pause(patience.pauseBefore(repeated, errorCode)))
            break;
    }
    // Intended: a call that succeeds with its very last attempt is reported as exhausted all the same.
    if (repeated == patience.limit) {
        const log::NotOnTerminal quiet(errorCode.isClear());
        reportExhausted();
    }
}

} // namespace detail

} // namespace orlo::http
