#include "Server.h"

#include "FileBody.h"
#include "RequestBody.h"

#include <charconv>
#include <optional>
#include <strings.h>

namespace orlo::platform {

namespace {

constexpr const char* everything = "[\\s\\S]*";
constexpr const char* streamedPaths = "/(blobs|_control/files|_control/datasets)[\\s\\S]*";
constexpr const char* garbage = "{\"code\":10000,\"data\":[<<garbage";

std::string bearerToken(const httplib::Request& request)
{
    const std::string scheme = "Bearer ";
    const std::string value = request.get_header_value("Authorization");
    return value.compare(0, scheme.size(), scheme) == 0 ? value.substr(scheme.size()) : std::string();
}

Call readCall(const httplib::Request& request)
{
    Call call;
    call.method = request.method;
    call.target = readTarget(request.target);
    call.body = request.body;
    call.accessToken = bearerToken(request);
    call.showsAuthorization = request.has_header("Authorization");
    call.acceptsGzip = request.get_header_value("Accept-Encoding").find("gzip") != std::string::npos;
    call.contentEncoding = request.get_header_value("Content-Encoding");
    return call;
}

std::optional<std::uint64_t> contentLength(const httplib::Request& request)
{
    const std::string text = request.get_header_value("Content-Length");
    std::uint64_t length = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    if (text.empty() || error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return length;
}

/// Whether it can be told where the body ends, as far as the method has one.
bool hasKnownEnd(const httplib::Request& request)
{
    const bool hasBody = request.method == "POST" || request.method == "PUT" || request.method == "PATCH";
    return !hasBody || contentLength(request) || ::strcasecmp(request.get_header_value("Transfer-Encoding").c_str(), "chunked") == 0;
}

/// What the library answers by itself has no body.
std::string wordsOf(int status)
{
    switch (status) {
    case 404:
        return "no such path";
    case 413:
        return "the body is too large";
    case 414:
        return "the address is too long";
    default:
        return "the request can't be read";
    }
}

/// The library sends the head alone, the connection the file behind it.
void sendFile(const Answer& answer, httplib::Response& response)
{
    response.set_header("Content-Type", answer.contentType);
    response.set_header("Content-Length", std::to_string(answer.file->file().size()));
    if (!answer.contentEncoding.empty())
        response.set_header("Content-Encoding", answer.contentEncoding);
    if (!answer.contentMd5.empty())
        response.set_header("Content-MD5", answer.contentMd5);
    if (answer.file->file().size() > 0) // an empty one is done with when its head has been sent
        Connection::current()->setBody([file = answer.file](Connection& connection) { file->send(connection); });
}

void send(const Answer& answer, httplib::Response& response)
{
    response.status = answer.status;
    if (answer.file)
        sendFile(answer, response);
    else if (!answer.body.empty() && answer.status != 204 && answer.status != 304)
        response.set_content(answer.body, answer.contentType);
}

Answer statusAnswer(const Fault& fault)
{
    if (fault.body.empty())
        return refused(fault.status, "a fault was asked for");
    return {fault.status, fault.body};
}

Answer garbageAnswer(const Fault& fault)
{
    return {200, fault.body.empty() ? garbage : fault.body};
}

/// The answer of `work`; what it throws becomes an answer too.
template <class Work>
Answer guarded(const Work& work)
{
    try {
        return work();
    }
    catch (const Refusal& refusal) {
        return refused(refusal.status(), refusal.what());
    }
    catch (const std::exception& error) {
        return refused(500, error.what());
    }
}

std::optional<Connection::Trap> trapOf(const Fault& fault)
{
    using Action = Connection::Action;
    switch (fault.kind) {
    case FaultKind::ResetBeforeAnswer:
        return Connection::Trap{Action::Reset};
    case FaultKind::ResetAfterBytes:
        return Connection::Trap{Action::Reset, fault.bytes};
    case FaultKind::CutBody:
        return Connection::Trap{Action::Close, fault.bytes, true};
    case FaultKind::Stall:
        return Connection::Trap{Action::Stall, fault.bytes, true, std::chrono::milliseconds(fault.delayMilliseconds)};
    default:
        return std::nullopt;
    }
}

bool needsAnswer(const Fault& fault)
{
    const auto trap = trapOf(fault);
    return fault.carryOut || (trap && fault.kind != FaultKind::ResetBeforeAnswer);
}

void arm(const Fault& fault, const Call& call)
{
    const auto trap = trapOf(fault);
    if (trap && fault.ofRequest && call.stream)
        call.stream->setTrap(*trap);
    else if (trap)
        Connection::current()->setTrap(*trap);
}

} // namespace

Server::Server(Answering answering)
    : m_answering(std::move(answering)), m_listener([this](Connection& connection) { return serve(connection); })
{
    Put(streamedPaths, [this](const httplib::Request& request, httplib::Response& response, const httplib::ContentReader&) {
        handleUpload(request, response);
    });
    const Handler handler = [this](const httplib::Request& request, httplib::Response& response) { handle(request, response, nullptr); };
    Get(everything, handler).Post(everything, handler).Put(everything, handler);
    Patch(everything, handler).Delete(everything, handler).Options(everything, handler);
    set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
        return hasKnownEnd(request) ? HandlerResponse::Unhandled : refuseLength(response);
    });
    set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty())
            send(refused(response.status, wordsOf(response.status)), response);
    });
    set_keep_alive_max_count(1000000);
    set_keep_alive_timeout(60);
    set_payload_max_length(std::size_t{512} * 1024 * 1024);
}

Server::~Server()
{
    Server::stop();
}

int Server::start(int port)
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = false;
    }
    return m_listener.open(port);
}

void Server::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_stopped.notify_all();
    m_listener.close();
}

bool Server::serve(Connection& connection)
{
    bool understood = false;
    bool closes = false;
    Connection::current() = &connection;
    connection.beginRequest();
    const bool served = process_request(connection, false, closes, [&](httplib::Request&) { understood = true; });
    Connection::current() = nullptr;
    if (served)
        connection.sendBody();
    connection.endAnswer();
    return served && understood && !closes && !connection.broken() && !connection.leaving();
}

bool Server::wait(std::chrono::milliseconds delay)
{
    std::unique_lock lock(m_mutex);
    return !m_stopped.wait_for(lock, delay, [this] { return m_stopping; });
}

Answer Server::answerStruck(Call& call, const Strike& strike)
{
    if (!strike.fault)
        return answer(call);
    const Fault& fault = *strike.fault;
    arm(fault, call);
    const Answer real = needsAnswer(fault) ? answer(call) : Answer();
    if (fault.kind == FaultKind::Status)
        return statusAnswer(fault);
    return fault.kind == FaultKind::Garbage ? garbageAnswer(fault) : real;
}

Answer Server::answer(Call& call) const
{
    return guarded([&] { return m_answering.answer(call); });
}

Answer Server::answerInTime(Call& call)
{
    const Strike strike = m_answering.strike(call);
    if (wait(strike.delay))
        return answerStruck(call, strike);
    Connection::current()->setTrap({Connection::Action::Reset});
    return {};
}

void Server::handle(const httplib::Request& request, httplib::Response& response, RequestBody* stream)
{
    const Answer answer = guarded([&] {
        Call call = readCall(request);
        call.stream = stream;
        return answerInTime(call);
    });
    send(answer, response);
}

/// Where the body ends is not known, so nothing can follow it.
Server::HandlerResponse Server::refuseLength(httplib::Response& response)
{
    Connection::current()->leave();
    send(refused(411, "the request needs a Content-Length"), response);
    return HandlerResponse::Handled;
}

void Server::handleUpload(const httplib::Request& request, httplib::Response& response)
{
    Connection& connection = *Connection::current();
    const std::optional<std::uint64_t> length = contentLength(request);
    if (!length) {
        refuseLength(response);
        return;
    }
    RequestBody body(connection, *length);
    handle(request, response, &body);
    body.skipRest();
}

} // namespace orlo::platform
