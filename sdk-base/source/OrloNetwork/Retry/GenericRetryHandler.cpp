#include "GenericRetryHandler.h"

#include "../NetworkCommon.h"
#include "../WebRequest.h"
#include "Attempts.h"
#include "DelayedTasks.h"
#include "Patience.h"

#include <BaseCommon/Caught.h>
#include <BaseCommon/Interruption.h>
#include <OrloLogging/Log.h>

#include <utility>

namespace orlo::http {

namespace {

bool isBrokenOff(const OrloCallbackContext& context)
{
    return context.interruption && context.interruption->isRequested();
}

} // namespace

GenericRetryHandler::GenericRetryHandler()
    : m_patience(std::make_unique<const Patience>(Patience::now())), m_attempts(std::make_shared<Attempts>())
{}

GenericRetryHandler::~GenericRetryHandler() = default;

void GenericRetryHandler::setOriginalHandler(std::shared_ptr<IOrloCallback> handler)
{
    m_originalHandler = std::move(handler);
}

void GenericRetryHandler::setOriginalPropogation(bool propagate)
{
    m_originalPropagation = propagate;
}

void GenericRetryHandler::setFunc(std::function<void()> request)
{
    m_request = std::make_shared<const std::function<void()>>(std::move(request));
}

void GenericRetryHandler::execute(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& errorCode)
{
    run(context, errorCode);
}

void GenericRetryHandler::on_complete(int status, const std::wstring& body, const std::string& stepKey,
                                      std::shared_ptr<OrloCallbackContext> context, ErrorCode& error)
{
    if (!m_awaitsAnswer.exchange(false) || repeats(status, context, error))
        return;
    if (const auto handler = finish(context))
        handler->on_complete(status, body, stepKey, context, error);
}

void GenericRetryHandler::on_complete(int status, const std::wstring& body, const std::vector<unsigned char>& data,
                                      const std::string& stepKey, std::shared_ptr<OrloCallbackContext> context, ErrorCode& error)
{
    if (!m_awaitsAnswer.exchange(false) || repeats(status, context, error))
        return;
    const auto handler = finish(context);
    if (const auto fileHandler = std::dynamic_pointer_cast<IOrloFileCallback>(handler))
        fileHandler->on_complete(status, body, data, stepKey, context, error);
    else if (handler)
        handler->on_complete(status, body, stepKey, context, error);
}

bool GenericRetryHandler::deservesAnotherAttempt(int status, const OrloCallbackContext& context, ErrorCode& error) const
{
    if (status == 200 || m_repeated == m_patience->limit || !m_request || isBrokenOff(context))
        return false;
    const auto failure = std::dynamic_pointer_cast<HttpError>(error.GetCategory());
    return failure && CalculateIsNeedRetryRequest(failure.get(), error);
}

bool GenericRetryHandler::repeats(int status, const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error)
{
    if (!deservesAnotherAttempt(status, *context, error))
        return false;
    try {
        repeatLater(context, error);
        return true;
    }
    catch (const std::exception&) { // no thread to wait on: the answer at hand is the last one then
        log::warning(L"OrloNetworkRetry::GenericRetryHandler - no retry: " + utils::caught().text);
        return false;
    }
}

void GenericRetryHandler::repeatLater(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error)
{
    ++m_repeated;
    log::warning(L"OrloNetworkRetry::GenericRetryHandler - retry attempts[" + std::to_wstring(m_repeated) + L"]");
    const std::chrono::milliseconds pause = m_patience->pauseBefore(m_repeated, error);
    const auto repeat = [self = shared_from_this(), context, &error] {
        const Interruption::Scope scope(context->interruption);
        context->propagate = self->m_originalPropagation;
        error.Clear();
        self->run(context, error);
    };
    runAfter(pause, repeat, context->interruption);
}

void GenericRetryHandler::run(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& error)
{
    // Both copies stay until the request returns, though its answer may come first and let go of them.
    const auto self = shared_from_this();
    const auto request = m_request;
    m_awaitsAnswer = true;
    m_attempts->begin();
    const Attempts::Scope scope(m_attempts);
    try {
        if (request)
            (*request)();
    }
    catch (...) {
        if (m_awaitsAnswer)
            HandleCasablancaException(pplx::task_from_exception<void>(std::current_exception()), context, "", error);
        else // the handler itself threw, through the request: it has had its answer
            log::errorAt(ORLO_HERE("orlo::http::GenericRetryHandler"), L"a request threw an exception after its answer");
    }
}

std::shared_ptr<IOrloCallback> GenericRetryHandler::finish(const std::shared_ptr<OrloCallbackContext>& context)
{
    // The request holds the context and the context this handler: here the circle is cut.
    m_request.reset();
    context->handler = m_originalHandler;
    return m_originalHandler;
}

void launchWithRetry(const std::shared_ptr<OrloCallbackContext>& context, ErrorCode& errorCode, std::function<void()> request)
{
    const auto retry = std::make_shared<GenericRetryHandler>();
    retry->setOriginalHandler(context->handler);
    retry->setOriginalPropogation(context->propagate);
    context->handler = retry;
    retry->setFunc(std::move(request));
    retry->execute(context, errorCode);
}

} // namespace orlo::http
