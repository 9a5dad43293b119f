#include "Server.h"

namespace orlo::platform {

namespace {

constexpr const char* kEverything = "[\\s\\S]*";
constexpr const char* kGarbage = "{\"code\":10000,\"data\":[<<garbage";

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
    return call;
}

void send(const Answer& answer, httplib::Response& response)
{
    response.status = answer.status;
    if (answer.status != 204 && answer.status != 304)
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
    return {200, fault.body.empty() ? kGarbage : fault.body};
}

/// The answer of `work`; what it throws becomes an answer too.
template <typename Work>
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

bool needsAnswer(const Fault& fault)
{
    return fault.carryOut || fault.kind == FaultKind::ResetAfterBytes || fault.kind == FaultKind::CutBody;
}

void arm(const Fault& fault, Connection& connection)
{
    if (fault.kind == FaultKind::ResetBeforeAnswer)
        connection.resetAfter(0);
    else if (fault.kind == FaultKind::ResetAfterBytes)
        connection.resetAfter(fault.bytes);
    else if (fault.kind == FaultKind::CutBody)
        connection.cutBodyAfter(fault.bytes);
}

} // namespace

Server::Server(Answering answering)
    : m_answering(std::move(answering)), m_listener([this](Connection& connection) { return serve(connection); })
{
    const Handler handler = [this](const httplib::Request& request, httplib::Response& response) { handle(request, response); };
    Get(kEverything, handler).Post(kEverything, handler).Put(kEverything, handler);
    Patch(kEverything, handler).Delete(kEverything, handler).Options(kEverything, handler);
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
    const bool served = process_request(connection, false, closes, [&](httplib::Request&) { understood = true; });
    Connection::current() = nullptr;
    connection.endAnswer();
    return served && understood && !closes && !connection.broken();
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
    arm(fault, *Connection::current());
    const Answer real = needsAnswer(fault) ? answer(call) : Answer();
    if (fault.kind == FaultKind::Status)
        return statusAnswer(fault);
    return fault.kind == FaultKind::Garbage ? garbageAnswer(fault) : real;
}

Answer Server::answer(Call& call) const
{
    return guarded([&] { return m_answering.answer(call); });
}

void Server::handle(const httplib::Request& request, httplib::Response& response)
{
    const Answer answer = guarded([&] {
        Call call = readCall(request);
        const Strike strike = m_answering.strike(call);
        if (wait(strike.delay))
            return answerStruck(call, strike);
        Connection::current()->resetAfter(0);
        return Answer();
    });
    send(answer, response);
}

} // namespace orlo::platform
