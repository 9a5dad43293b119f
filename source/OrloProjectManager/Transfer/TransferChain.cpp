#include "TransferChain.h"

#include "../Frame/StayLoaded.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/Interruption.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/JsonText.h>
#include <OrloNetwork/Lifetime/WorkPermit.h>
#include <OrloNetwork/Retry/GenericRetryHandler.h>

#include <thread>
#include <utility>

namespace orlo {

namespace {

constexpr const wchar_t* endOfPromise = L"[END_SET_FALSE_TO_PROMISE]";

std::future<PromiseData> failedFuture()
{
    std::promise<PromiseData> promise;
    promise.set_value(PromiseData());
    return promise.get_future();
}

/// interruption: that of whoever waits for the transfer; null where nobody does.
void runWorker(const TransferWorker& worker, const std::shared_ptr<TransferOutcome>& outcome, const CallSite& site,
               const std::shared_ptr<Interruption>& interruption) noexcept
{
    const http::WorkPermit permit(interruption != nullptr);
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

TransferOutcome::~TransferOutcome()
{
    // What is dropped at the end of the process has no caller left.
    const http::WorkPermit permit;
    if (!m_callersError || !permit)
        return;
    try {
        set({false, utils::Caught::known, L"the transfer ended without an outcome"}, ErrorCode());
    }
    catch (const std::exception&) { // no memory for the words; the promise is broken then
    }
}

void TransferOutcome::set(const PromiseData& data, const ErrorCode& error)
{
    const std::lock_guard lock(m_mutex);
    if (ErrorCode* const callers = std::exchange(m_callersError, nullptr))
        *callers = error;
    m_promise.set_value(data);
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
        const auto outcome = std::make_shared<TransferOutcome>(error);
        std::future<PromiseData> started = outcome->future();
        std::thread([worker = std::move(worker), outcome, site, interruption] { runWorker(worker, outcome, site, interruption); }).detach();
        return started;
    });
    return future.valid() ? std::move(future) : failedFuture();
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
