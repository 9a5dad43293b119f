#pragma once

#include <BaseCommon/ErrorCode.h>
#include <OrloLogging/Log.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <future>
#include <mutex>

namespace orlo {

/// How a job ended, for those who ask while the job object lives. The first outcome stands.
class JobOutcome
{
public:
    void set(bool success, int status, const std::wstring& message);
    /// Ends the job as failed: "上传文件失败：" and what the ErrorCode says. Gives false.
    bool fail(const ErrorCode& error);
    /// Ends the job as cancelled: with the status and the message of a transfer that was.
    void cancel();
    /// Waits for the outcome.
    ErrorCode asErrorCode() const;
    std::shared_future<PromiseData> future() const { return m_future; }

private:
    std::promise<PromiseData> m_promise;
    std::shared_future<PromiseData> m_future = m_promise.get_future().share();
    std::once_flag m_once;
    bool m_isCancelled = false; ///< set before the outcome is
};

} // namespace orlo
