#include "TransferChain.h"

#include "../Frame/StayLoaded.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/JsonText.h>
#include <OrloNetwork/Lifetime/WorkPermit.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>

#include <thread>
#include <utility>
#include <vector>

namespace orlo {

namespace {

constexpr const wchar_t* endOfPromise = L"[END_SET_FALSE_TO_PROMISE]";

const PromiseData& cancelledOutcome()
{
    static const PromiseData& outcome = utils::neverDestroyed(new PromiseData(false, utils::Caught::known, L"cancelled"));
    return outcome;
}

/// interruption: what the transfer was to be bound to.
std::future<PromiseData> failedFuture(const std::shared_ptr<Interruption>& interruption, ErrorCode& error)
{
    const bool isCancelled = interruption && interruption->isCancelled();
    if (isCancelled)
        error = cancelledError();
    std::promise<PromiseData> promise;
    promise.set_value(isCancelled ? cancelledOutcome() : PromiseData());
    return promise.get_future();
}

/// A host's thread may still wait for what is dropped at the end of the process, and would be thrown at.
void leavePending(std::promise<PromiseData> promise)
{
    static std::mutex& mutex = utils::neverDestroyed(new std::mutex);
    static auto& pending = utils::neverDestroyed(new std::vector<std::promise<PromiseData>>);
    const std::lock_guard lock(mutex);
    pending.push_back(std::move(promise));
}

/// interruption: that of whoever waits for the transfer, or of the host's scope; null where there is neither.
void runWorker(const TransferWorker& worker, const std::shared_ptr<TransferOutcome>& outcome, const CallSite& site,
               const std::shared_ptr<Interruption>& interruption) noexcept
{
    const http::WorkPermit permit(Interruption::isAwaited(interruption));
    if (!permit)
        return;
    const Interruption::Scope scope(interruption);
    try {
        worker(outcome);
    }
    catch (...) {
        outcome->failAsCaught(site);
    }
    utils::forgetOpenSslOfThread();
}

} // namespace

TransferOutcome::TransferOutcome(ErrorCode& callersError, std::shared_ptr<Interruption> interruption)
    : m_interruption(std::move(interruption)), m_callersError(&callersError)
{}

TransferOutcome::~TransferOutcome()
{
    if (!m_callersError)
        return;
    try {
        const http::WorkPermit permit;
        if (!permit) {
            leavePending(std::move(m_promise));
            return;
        }
        set({false, utils::Caught::known, L"the transfer ended without an outcome"}, ErrorCode());
    }
    catch (const std::exception&) { // no memory for the words; the promise is broken then
    }
}

void TransferOutcome::set(const PromiseData& data, const ErrorCode& error)
{
    // Whatever the reason at hand: the host wanted it to end.
    const bool wasCancelled = !data.success && isCancelled();
    const PromiseData outcome = wasCancelled ? cancelledOutcome() : data;
    const ErrorCode told = wasCancelled ? cancelledError() : error;
    const std::lock_guard lock(m_mutex);
    if (ErrorCode* const callers = std::exchange(m_callersError, nullptr))
        *callers = told;
    m_promise.set_value(outcome);
}

void TransferOutcome::settleWhenCancelled(std::function<void()> settled)
{
    if (!m_interruption)
        return;
    const auto settle = [weak = weak_from_this(), settled = std::move(settled)] {
        const auto outcome = weak.lock();
        if (!outcome || !outcome->isCancelled())
            return;
        {
            const std::lock_guard lock(outcome->m_mutex);
            if (!std::exchange(outcome->m_callersError, nullptr))
                return;
            outcome->m_promise.set_value(cancelledOutcome());
        }
        settled();
    };
    m_whenCancelled.emplace(m_interruption, settle);
}

void TransferOutcome::refuse(const std::wstring& message)
{
    const std::lock_guard lock(m_mutex);
    m_callersError = nullptr;
    m_promise.set_value({false, 400, message});
}

void TransferOutcome::settle(const PromiseData& data, const ErrorCode& error, const CallSite& site) noexcept
{
    try {
        set(data, error);
    }
    catch (const std::exception&) {
        log::errorAt(site, endOfPromise + utils::caught().text);
    }
}

void TransferOutcome::failAsCaught(const CallSite& site)
{
    const utils::Caught caught = utils::caught();
    log::errorAt(site, endOfPromise + caught.text);
    settle({false, utils::Caught::known, caught.text},
           ErrorCode(error::exception, makeHttpError(L"HttpError", caught.text, caught.code, 0)), site);
}

std::future<PromiseData> startTransfer(const CallSite& site, ErrorCode& error, TransferWorker worker)
{
    stayLoaded();
    // Asked before the frame, which would wait for itself.
    const auto interruption = Interruption::current();
    std::future<PromiseData> future = CallFrame(site).run(error, [&] {
        const auto outcome = std::make_shared<TransferOutcome>(error, interruption);
        std::future<PromiseData> started = outcome->future();
        std::thread([worker = std::move(worker), outcome, site, interruption] { runWorker(worker, outcome, site, interruption); }).detach();
        return started;
    });
    return future.valid() ? std::move(future) : failedFuture(interruption, error);
}

void startChain(std::shared_ptr<IOrloCallback> handler, FirstStep firstStep)
{
    stayLoaded();
    const auto context = std::make_shared<ChainContext>(std::move(handler), true);
    ErrorCode& error = context->error;
    http::launchWithRetry(context, error, [firstStep = std::move(firstStep), context, &error] { firstStep(error, context); });
}

web::json::value jsonOrNull(const std::wstring& body)
{
    try {
        return http::parseJson(utils::toString(body));
    }
    catch (const std::exception&) { // half a surrogate pair is told by another type than the rest
        return web::json::value::null();
    }
}

} // namespace orlo
