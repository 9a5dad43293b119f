#include "AsyncCall.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/Operation.h>
#include <OrloNetwork/SinkBuffer.h>
#include <OrloNetwork/WebRequest.h>
#include <OrloNetwork/WorkPermit.h>

#include <stdexcept>

namespace orlo {

using web::http::http_response;

void Step::complete(int status, const std::wstring& body) const
{
    if (const auto handler = context->handler)
        handler->on_complete(status, body, key, context, *error);
}

void Step::complete(int status, const std::wstring& body, const std::vector<unsigned char>& data) const
{
    if (const auto handler = std::dynamic_pointer_cast<IOrloFileCallback>(context->handler))
        handler->on_complete(status, body, data, key, context, *error);
    else
        complete(status, body);
}

void noteStatus(ErrorCode& error, const http_response& response, const std::string& body)
{
    const int status = response.status_code();
    if (status >= 400)
        error.Assign(error::errorStatus, std::make_shared<HttpError>(L"HttpError", OrloWebService::TextOf(response, body), status, 0));
}

namespace {

/// What breaks the step's chain off; null where nobody waits for the chain, which is just dropped when the process ends.
const std::shared_ptr<Interruption>& interruptionOf(const Step& step)
{
    return step.context->interruption;
}

void goOnUnlessBrokenOff(const Step& step)
{
    if (interruptionOf(step) && interruptionOf(step)->isRequested())
        throw std::runtime_error("the work was broken off");
}

/// A piece of the step's work on a thread of the pool.
class Piece
{
public:
    explicit Piece(const Step& step) : m_permit(interruptionOf(step) != nullptr), m_scope(interruptionOf(step)) {}

    explicit operator bool() const { return static_cast<bool>(m_permit); }

private:
    const http::WorkPermit m_permit;
    const Interruption::Scope m_scope;
};

void reportFailure(const pplx::task<void>& ended, const Step& step, http::WorkBaton& baton)
{
    const Piece piece(step);
    baton.drop();
    if (piece)
        return http::HandleCasablancaException(ended, step.context, step.key, *step.error);
    try {
        ended.get();
    }
    catch (...) { // looked at, which is all that a failure wants now
    }
}

struct PassOn
{
    http::WorkBaton& baton;
    ~PassOn() { baton.take(); }
};

} // namespace

void exchange(const Step& step, const std::function<Exchange()>& prepare, std::function<void(const uint8_t*, size_t)> sink,
              std::function<void(http_response)> answered)
{
    const auto baton = std::make_shared<http::WorkBaton>();
    const auto fail = [step, baton](const pplx::task<void>& ended) { reportFailure(ended, step, *baton); };
    try {
        goOnUnlessBrokenOff(step);
        const Exchange made = prepare();
        made.request->set_response_stream(http::SinkBuffer::stream(std::move(sink)));
        OrloWebService::LogRequest(*made.client, *made.request);
        const auto cancellation = std::make_shared<const http::Cancellation>(interruptionOf(step));
        made.client->request(*made.request, cancellation->token())
            .then([made](const http_response& response) { return response.content_ready(); })
            .then([made, cancellation, step, baton, answered = std::move(answered)](const http_response& response) {
                const Piece piece(step);
                if (!piece)
                    return;
                // The outcome may stand and the process end before the last continuation has had its turn.
                const PassOn pass{*baton};
                OrloWebService::LogResponse(response, *made.request, *step.error);
                answered(response);
            })
            .then(fail);
    }
    catch (...) {
        fail(pplx::task_from_exception<void>(std::current_exception()));
    }
}

void send(const Step& step, const WebCall& call, std::function<void(WebAnswer&)> answered)
{
    const auto body = std::make_shared<std::string>();
    const auto receive = [body](const uint8_t* bytes, size_t count) {
        if (count > OrloWebService::largestAnswer - body->size())
            throw std::length_error("the answer is too large");
        body->append(reinterpret_cast<const char*>(bytes), count);
    };
    exchange(
        step, [call] { return call.prepare(); }, receive,
        [step, call, body, answered = std::move(answered)](http_response response) {
            noteStatus(*step.error, response, *body);
            response.set_body(std::move(*body), "application/json");
            WebAnswer answer = call.answer(response, *step.error);
            answered(answer);
        });
}

} // namespace orlo
