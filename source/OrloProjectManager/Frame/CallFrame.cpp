#include "CallFrame.h"

#include <BaseCommon/Text.h>

#include <cpprest/http_msg.h>

namespace orlo {

namespace {

void assign(ErrorCode& error, const std::wstring& name, const std::wstring& text, int code)
{
    error.Assign(error::exception, std::make_shared<HttpError>(name, text, code, 0));
}

} // namespace

void CallFrame::checkEntry(const ErrorCode& error) const
{
    if (!error.isClear())
        log::errorAt(m_site, L"传入的ErrorCode，已有错误存在:" + error.GetErrorMessage());
}

void CallFrame::caught(ErrorCode& error, Rungs rungs) const noexcept
{
    try {
        report(error, rungs);
    }
    catch (...) { // no memory is left to say it in words
        error.Assign(error::exception, nullptr);
    }
}

void CallFrame::report(ErrorCode& error, Rungs rungs) const
{
    try {
        throw;
    }
    catch (const std::exception& e) {
        const std::wstring text = utils::toWstringTrimTrailingCarriageReturn(e.what());
        const auto* transport = dynamic_cast<const web::http::http_exception*>(&e);
        if (transport && rungs == Rungs::withTransport)
            return assign(error, L"generic exception", text, transport->error_code().value());
        assign(error, L"HttpError", text, 5555);
        log::errorAt(m_site, L"[END_API_IMPLEMENTATION][A generic exception caught] message[" + text + L"]");
    }
    catch (...) {
        assign(error, L"HttpError", L"unknown exception", 5556);
        log::errorAt(m_site, L"[END_API_IMPLEMENTATION]unknown exception occurred");
    }
}

} // namespace orlo
