#include "CallFrame.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/Interruption.h>
#include <OrloNetwork/RequestNote.h>
#include <OrloNetwork/Retry/TransportCode.h>

namespace orlo {

namespace {

void assign(ErrorCode& error, const std::wstring& name, const std::wstring& text, int code)
{
    error.Assign(error::exception, http::errorOfCaught(name, text, code));
}

} // namespace

void CallFrame::checkEntry(const ErrorCode& error) const
{
    if (!error.isClear())
        log::errorAt(m_site, L"传入的ErrorCode，已有错误存在:" + error.GetErrorMessage());
}

bool CallFrame::isCancelledOutside() noexcept
{
    const auto scope = Interruption::current();
    return scope && !http::Operation::isUnderWay() && scope->isCancelled();
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
    const utils::Caught caught = utils::caught();
    const std::optional<int> transportCode = http::transportCodeOfCaught();
    if (transportCode && rungs == Rungs::withTransport)
        return assign(error, L"generic exception", caught.text, *transportCode);
    assign(error, L"HttpError", caught.text, caught.code);
    log::errorAt(m_site, caught.isUnknown() ? L"[END_API_IMPLEMENTATION]unknown exception occurred"
                                            : L"[END_API_IMPLEMENTATION][A generic exception caught] message[" + caught.text + L"]");
}

} // namespace orlo
