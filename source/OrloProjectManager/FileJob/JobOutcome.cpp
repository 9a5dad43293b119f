#include "JobOutcome.h"

#include <BaseCommon/Caught.h>

namespace orlo {

void JobOutcome::set(bool success, int status, const std::wstring& message)
{
    std::call_once(m_once, [&] { m_promise.set_value(PromiseData(success, status, message)); });
}

bool JobOutcome::fail(const ErrorCode& error)
{
    set(false, 10011, L"上传文件失败：" + error.GetErrorMessage());
    return false;
}

void JobOutcome::cancel()
{
    std::call_once(m_once, [&] {
        m_isCancelled = true;
        m_promise.set_value(PromiseData(false, utils::Caught::known, cancelledError().GetErrorMessage()));
    });
}

ErrorCode JobOutcome::asErrorCode() const
{
    const PromiseData outcome = m_future.get();
    if (m_isCancelled)
        return cancelledError();
    return {error::exception, makeHttpError(L"httpError", outcome.message, outcome.status, 0)};
}

} // namespace orlo
