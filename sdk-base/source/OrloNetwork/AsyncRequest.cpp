// What the asynchronous requests share: their log lines and the end of their chains.

#include "RequestNote.h"
#include "Retry/TransportCode.h"
#include "WebRequest.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>
#include <OrloLogging/Log.h>

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
    log::info(L"OrloWebService::LogRequest - " + describe(request) + L" at " + utils::fromNative(base.host()) +
              utils::fromNative(base.path()));
}

void LogResponse(const web::http::http_response& response, const web::http::http_request& request, ErrorCode& errorCode)
{
    std::wstring line = L"OrloWebService::LogResponse - " + describe(request) + L" - status:" + std::to_wstring(response.status_code());
    if (!errorCode.isClear())
        line += L", " + errorCode.GetErrorMessage();
    log::info(line);
}

} // namespace OrloWebService

namespace http {

namespace {

/// Ends a failure's text where an address begins: a signed one must reach no log and no caller, and one that is no valid
/// URI may hold blanks, so that nobody can tell where it ends.
std::wstring withoutAddress(const std::wstring& text)
{
    const std::size_t mark = text.find(L"://");
    if (mark == std::wstring::npos)
        return text;
    const std::size_t before = text.find_last_of(L" \t\r\n\"'", mark);
    return text.substr(0, before == std::wstring::npos ? 0 : before + 1) + L"<address>";
}

/// Of the exception that is being handled.
std::wstring wordsWithoutAddress(const utils::Caught& caught)
{
    try {
        throw;
    }
    catch (const web::uri_exception&) { // its text is the address
        return L"the address is not a valid URI";
    }
    catch (...) {
        return withoutAddress(caught.text);
    }
}

constexpr const char* handlesException = "orlo::http::HandleCasablancaException";

/// Of the exception that is being handled.
void report(const std::shared_ptr<OrloCallbackContext>& context, const std::string& stage, ErrorCode& errorCode)
{
    const utils::Caught caught = utils::caught();
    const std::wstring text = wordsWithoutAddress(caught);
    const int code = transportCodeOfCaught().value_or(caught.code);
    errorCode.Assign(error::exception, errorOfCaught(L"generic exception", text, code));
    log::errorAt(ORLO_HERE(handlesException), utils::toWstring(stage) + L" - exception caught: message[" + text + L"]");
    if (!context)
        return;
    context->propagate = false;
    if (const auto handler = context->handler)
        handler->on_complete(utils::Caught::known, text, stage, context, errorCode);
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
            report(context, stage, errorCode);
        }
        catch (...) { // a handler that throws has no one left to tell
            log::errorAt(ORLO_HERE(handlesException), L"the handler of a failed request threw an exception");
        }
    }
}

} // namespace http

} // namespace orlo
