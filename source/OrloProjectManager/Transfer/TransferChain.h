#pragma once

// What all transfers share: a chain of steps, each a request under a retry handler, with one handler that hears how each
// step ended and decides on the next, and one outcome at the end.

#include "../Frame/CallFrame.h"

#include <BaseCommon/Callbacks.h>
#include <BaseCommon/Interruption.h>
#include <OrloProjectManager/Transfer/PromiseData.h>

#include <cpprest/json.h>

#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>

namespace orlo {

/// The context of one chain, or of one stream of a batch, with the ErrorCode that its steps write. The caller's own is not
/// touched by them: it may be gone as soon as the future is ready, and parallel streams must not share one.
class ChainContext final : public OrloCallbackContext
{
public:
    ChainContext(std::shared_ptr<IOrloCallback> chainHandler, bool furtherStepFollows)
        : OrloCallbackContext(std::move(chainHandler), furtherStepFollows)
    {}

    ErrorCode error;
};

/// The end of a transfer: the promise, and the caller's ErrorCode, which is written once just before.
class TransferOutcome : public std::enable_shared_from_this<TransferOutcome>
{
public:
    /// interruption: what the transfer is bound to; null where that is nothing.
    explicit TransferOutcome(ErrorCode& callersError, std::shared_ptr<Interruption> interruption = nullptr);
    /// A transfer that was lost on its way ends as a local failure, never as a broken promise.
    ~TransferOutcome();

    TransferOutcome(const TransferOutcome&) = delete;
    TransferOutcome& operator=(const TransferOutcome&) = delete;

    std::future<PromiseData> future() { return m_promise.get_future(); }

    /// Throws std::future_error if the outcome stands already; the first one is kept.
    void set(const PromiseData& data, const ErrorCode& error);
    /// The same for the end of a chain: an exception is logged under the handler's name instead.
    void settle(const PromiseData& data, const ErrorCode& error, const CallSite& site) noexcept;
    /// For the exception that is being handled: logged, and a local failure.
    void failAsCaught(const CallSite& site);
    /// For an input that is refused before any request. The caller's ErrorCode is left as it is.
    void refuse(const std::wstring& message);

    /// For a transfer that would never end: the host's cancelling makes its future ready. The caller's ErrorCode, which may be gone by
    /// then, is left alone.   settled: called then.
    void settleWhenCancelled(std::function<void()> settled);
    bool isCancelled() const { return m_interruption && m_interruption->isCancelled(); }

private:
    const std::shared_ptr<Interruption> m_interruption;
    std::mutex m_mutex;
    ErrorCode* m_callersError; ///< null once the outcome stands
    std::promise<PromiseData> m_promise;
    std::optional<Interruption::Listener> m_whenCancelled;
};

using TransferWorker = std::function<void(const std::shared_ptr<TransferOutcome>&)>;

/// Starts the worker on a thread of its own and returns the future. In the frame of the operation at `site`; a failure gives
/// a future that is ready with a default PromiseData.
std::future<PromiseData> startTransfer(const CallSite& site, ErrorCode& error, TransferWorker worker);

using FirstStep = std::function<void(ErrorCode&, const std::shared_ptr<OrloCallbackContext>&)>;

/// Starts a chain: makes a context for the handler and runs the first step under a retry handler.
void startChain(std::shared_ptr<IOrloCallback> handler, FirstStep firstStep);

/// The step's body as JSON; null for a text that is none.
web::json::value jsonOrNull(const std::wstring& body);

} // namespace orlo
