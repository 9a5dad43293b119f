// What the asynchronous requests share: their log lines and the end of their chains.

#include "WebRequest.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/ILogManager.h>

namespace orlo {

namespace OrloWebService {

namespace {

std::wstring describe(const web::http::http_request& request)
{
    return utils::fromNative(request.method()) + L" " + utils::fromNative(request.request_uri().path());
}

} // namespace

void LogRequest(const web::http::client::http_client& client, const web::http::http_request& request)
{
    const web::uri& base = client.base_uri();
    ILogManager::Get()->LogInfo(L"[ORLOSDK]OrloWebService::LogRequest - " + describe(request) + L" at " + utils::fromNative(base.host()) +
                                utils::fromNative(base.path()));
}

void LogResponse(const web::http::http_response& response, const web::http::http_request& request, ErrorCode& errorCode)
{
    std::wstring line =
        L"[ORLOSDK]OrloWebService::LogResponse - " + describe(request) + L" - status:" + std::to_wstring(response.status_code());
    if (!errorCode.isClear())
        line += L", " + errorCode.GetErrorMessage();
    ILogManager::Get()->LogInfo(line);
}

} // namespace OrloWebService

namespace http {

namespace {

/// Ends a failure's text where an address begins: a signed one must reach no log and no caller, and one that is no valid
/// URI may hold blanks, so that nobody can tell where it ends.
std::wstring withoutAddress(const std::wstring& text)
{
    const size_t mark = text.find(L"://");
    if (mark == std::wstring::npos)
        return text;
    const size_t before = text.find_last_of(L" \t\r\n\"'", mark);
    return text.substr(0, before == std::wstring::npos ? 0 : before + 1) + L"<address>";
}

struct Failure
{
    std::wstring text;
    int code;
};

Failure failureOf(const std::exception_ptr& thrown)
{
    const auto textOf = [](const std::exception& e) { return withoutAddress(utils::toWstringTrimTrailingCarriageReturn(e.what())); };
    try {
        std::rethrow_exception(thrown);
    }
    catch (const web::http::http_exception& e) {
        return {textOf(e), e.error_code().value()};
    }
    catch (const web::uri_exception&) { // its text is the address
        return {L"the address is not a valid URI", 5555};
    }
    catch (const std::exception& e) {
        return {textOf(e), 5555};
    }
    catch (...) {
        return {L"unknown exception", 5556};
    }
}

void report(const std::exception_ptr& thrown, const std::shared_ptr<OrloCallbackContext>& context, const std::string& stage,
            ErrorCode& errorCode)
{
    const Failure failure = failureOf(thrown);
    errorCode.Assign(error::exception, std::make_shared<HttpError>(L"generic exception", failure.text, failure.code, 0));
    ILogManager::Get()->LogErrorAt(__FILE__, __LINE__, "orlo::http::HandleCasablancaException",
                                   utils::toWstring(stage) + L" - exception caught: message[" + failure.text + L"]", L"[ORLOSDK]");
    if (!context)
        return;
    context->propagate = false;
    if (const auto handler = context->handler)
        handler->on_complete(5555, failure.text, stage, context, errorCode);
}

} // namespace

void HandleCasablancaException(const pplx::task<void>& task, const std::shared_ptr<OrloCallbackContext>& context, const std::string& stage,
                               ErrorCode& errorCode) noexcept
{
    try {
        task.get();
        return;
    }
    catch (...) {
        try {
            report(std::current_exception(), context, stage, errorCode);
        }
        catch (...) { // a handler that throws has no one left to tell
            ILogManager::Get()->LogErrorAt(__FILE__, __LINE__, "orlo::http::HandleCasablancaException",
                                           L"the handler of a failed request threw an exception", L"[ORLOSDK]");
        }
    }
}

} // namespace http

} // namespace orlo
