#include "AsyncCall.h"

#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/SinkBuffer.h>
#include <OrloNetwork/Engine/Workers.h>
#include <OrloNetwork/Lifetime/Operation.h>
#include <OrloNetwork/Lifetime/WorkPermit.h>
#include <OrloNetwork/RequestNote.h>
#include <OrloNetwork/Retry/Attempts.h>
#include <OrloNetwork/WebRequest.h>

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

void noteStatus(ErrorCode& error, const Arrival& arrival, const std::string& body)
{
    const http_response& response = arrival.response;
    if (response.status_code() >= 400)
        error.Assign(error::errorStatus,
                     http::errorOfStatus(*arrival.made.request, arrival.made.note.get(), response, OrloWebService::TextOf(response, body)));
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

/// A piece of the step's work on a worker.
class Piece
{
public:
    explicit Piece(const Step& step) : m_permit(Interruption::isAwaited(interruptionOf(step))), m_scope(interruptionOf(step)) {}

    explicit operator bool() const { return static_cast<bool>(m_permit); }

private:
    const http::WorkPermit m_permit;
    const Interruption::Scope m_scope;
};

/// The response, once its body is there, without a thread between the two.
pplx::task<http_response> withContent(const http_response& response)
{
    const pplx::task_options atOnce(http::Workers::atOnce());
    return pplx::create_task(response._get_impl()->_get_data_available(), atOnce)
        .then([response](utility::size64_t) { return response; }, atOnce);
}

void reportCaught(const Step& step)
{
    http::HandleCasablancaException(pplx::task_from_exception<void>(std::current_exception()), step.context, step.key, *step.error);
}

http_response taken(const pplx::task<http_response>& arrived, const Exchange& made)
try {
    const http_response response = arrived.get();
    http::tellEnd(*made.request, made.note.get(), response.status_code());
    return response;
}
catch (...) {
    http::tellFailure(*made.request, made.note.get());
    throw;
}

/// The end of an exchange, in one piece: the outcome may stand and the process end while it still runs.
void conclude(const pplx::task<http_response>& arrived, const Step& step, const Exchange& made,
              const std::function<void(const Arrival&)>& answered, const std::function<void()>& abandon)
{
    const Piece piece(step);
    try {
        const Arrival arrival{taken(arrived, made), made};
        if (!piece)
            return;
        OrloWebService::LogResponse(arrival.response, *made.request, *step.error);
        answered(arrival);
    }
    catch (...) {
        if (abandon)
            abandon();
        if (piece)
            reportCaught(step);
    }
}

} // namespace

void exchange(const Step& step, const std::function<Exchange()>& prepare, const concurrency::streams::ostream& sink,
              std::function<void(const Arrival&)> answered, std::function<void()> abandon)
{
    try {
        goOnUnlessBrokenOff(step);
        const Exchange made = prepare();
        made.request->set_response_stream(sink);
        OrloWebService::LogRequest(*made.client, *made.request);
        const auto cancellation = std::make_shared<const http::Cancellation>(interruptionOf(step));
        made.client->request(*made.request, cancellation->token())
            .then(&withContent, pplx::task_options(http::Workers::atOnce()))
            .then([made, cancellation, step, answered = std::move(answered), abandon = std::move(abandon)](
                      const pplx::task<http_response>& arrived) { conclude(arrived, step, made, answered, abandon); },
                  pplx::task_options(http::Workers::scheduler()));
    }
    catch (...) {
        if (const Piece piece(step); piece)
            reportCaught(step);
    }
}

namespace {

enum class Token { mayBeRenewed, isNew };

void sendWith(Token token, const Step& step, const WebCall& call, const std::function<Exchange()>& prepare,
              const std::function<void(WebAnswer&)>& answered)
{
    const auto body = std::make_shared<std::string>();
    const auto receive = [body](const uint8_t* bytes, std::size_t count) {
        if (count > OrloWebService::largestAnswer - body->size())
            throw std::length_error("the answer is too large");
        body->append(reinterpret_cast<const char*>(bytes), count);
    };
    // The request that is repeated with another token is the same attempt.
    exchange(step, prepare, http::SinkBuffer::stream(receive, http::SinkBuffer::Place::inPlace),
             [token, step, call, body, answered, attempts = http::Attempts::current()](const Arrival& arrival) {
                 const http::Attempts::Scope scope(attempts);
                 if (token == Token::mayBeRenewed) {
                     if (const auto again = call.prepareAgain(arrival.made, arrival.response))
                         return sendWith(
                             Token::isNew, step, call, [made = *again] { return made; }, answered);
                 }
                 noteStatus(*step.error, arrival, *body);
                 http_response response = arrival.response;
                 response.set_body(std::move(*body), "application/json");
                 WebAnswer answer = call.answer(response, *step.error);
                 answered(answer);
             });
}

} // namespace

void send(const Step& step, const WebCall& call, const std::function<void(WebAnswer&)>& answered)
{
    sendWith(
        Token::mayBeRenewed, step, call, [call] { return call.prepare(); }, answered);
}

} // namespace orlo
