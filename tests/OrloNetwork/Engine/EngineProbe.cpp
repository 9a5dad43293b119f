#include "EngineProbe.h"

#include "support/Waiting.h"

#include <BaseCommon/NativeText.h>
#include <BaseCommon/Text.h>
#include <OrloNetwork/Body/SinkBuffer.h>
#include <OrloNetwork/NetworkCommon.h>

#include <cstdlib>
#include <memory>
#include <thread>
#include <utility>

namespace orlo::test {

namespace {

using http::SinkBuffer;
using web::http::http_request;
using web::http::http_response;

web::http::client::http_client_config configOf(const Sending& sending)
{
    web::http::client::http_client_config config;
    config.set_timeout(sending.timeout);
    return config;
}

std::shared_ptr<std::string> receive(http_request& request, SinkBuffer::Place place)
{
    const auto body = std::make_shared<std::string>();
    request.set_response_stream(SinkBuffer::stream(
        [body](const std::uint8_t* bytes, std::size_t count) { body->append(reinterpret_cast<const char*>(bytes), count); }, place));
    return body;
}

void takeHead(Outcome& outcome, const http_response& response)
{
    outcome.status = response.status_code();
    outcome.reason = utils::fromNativeToUtf8(response.reason_phrase());
    outcome.headers = response.headers();
}

/// Inside a handler of exceptions.
void takeFailure(Outcome& outcome)
{
    outcome.hasFailed = true;
    try {
        throw;
    }
    catch (const web::http::http_exception& e) {
        outcome.number = e.error_code().value();
        outcome.text = e.what();
    }
    catch (const std::exception& e) {
        outcome.number = -1;
        outcome.text = e.what();
    }
}

} // namespace

std::ostream& operator<<(std::ostream& out, Way way)
{
    return out << (way == Way::here ? "here" : "loop");
}

std::string Outcome::header(const std::string& name) const
{
    utility::string_t value;
    return headers.match(utils::toNative(name), value) ? utils::fromNativeToUtf8(value) : "none";
}

http_request requestOf(const std::string& method, const std::string& path)
{
    http_request request{utils::toNative(method)};
    request.set_request_uri(web::uri(utils::toNative(path)));
    request.headers().add(utils::toNative(std::string("User-Agent")), utils::toNative(std::string("probe")));
    return request;
}

http_request requestOf(const std::string& method, const std::string& path, const std::string& body, const std::string& type)
{
    http_request request = requestOf(method, path);
    request.set_body(body, type);
    return request;
}

Outcome outcomeOf(Way way, const std::string& url, http_request request, const Sending& sending)
{
    if (way == Way::loop)
        return begin(url, std::move(request), sending).get();
    Outcome outcome;
    const auto body = receive(request, SinkBuffer::Place::inPlace);
    try {
        auto config = configOf(sending);
        const auto client = OrloWebService::CreateClient(utils::toWstring(url), config, sending.traffic);
        takeHead(outcome, OrloWebService::SendAndWait(*client, request));
    }
    catch (...) {
        takeFailure(outcome);
    }
    outcome.body = std::move(*body);
    return outcome;
}

pplx::task<Outcome> begin(const std::string& url, http_request request, const Sending& sending)
{
    const auto body = receive(request, SinkBuffer::Place::apart);
    const auto outcome = std::make_shared<Outcome>();
    try {
        auto config = configOf(sending);
        const auto client = OrloWebService::CreateClient(utils::toWstring(url), config, sending.traffic);
        return client->request(request, sending.token)
            .then([client, outcome](const http_response& response) {
                takeHead(*outcome, response);
                return response.content_ready();
            })
            .then([body, outcome](const pplx::task<http_response>& whole) {
                try {
                    whole.get();
                }
                catch (...) {
                    takeFailure(*outcome);
                }
                outcome->body = *body;
                return *outcome;
            });
    }
    catch (...) {
        takeFailure(*outcome);
        return pplx::task_from_result(*outcome);
    }
}

Outcome outcomeOf(Way way, const std::string& url, const Sending& sending)
{
    return outcomeOf(way, url, requestOf("GET", "/thing"), sending);
}

bool isWorthAnotherAttempt(const Outcome& outcome)
{
    ErrorCode error;
    const HttpError failure(L"generic exception", utils::toWstring(outcome.text), outcome.number, 0);
    return http::CalculateIsNeedRetryRequest(&failure, error);
}

std::string readWire(Connection& connection)
{
    std::string wire;
    std::size_t head = 0;
    while ((head = wire.find("\r\n\r\n")) == std::string::npos) {
        if (!connection.read(wire))
            return wire;
    }
    head += 4;
    const std::string lines = wire.substr(0, head);
    if (lines.find("\r\nTransfer-Encoding: chunked\r\n") != std::string::npos) {
        while (wire.compare(wire.size() - 5, 5, "0\r\n\r\n") != 0) {
            if (!connection.read(wire))
                return wire;
        }
    }
    const std::string length = "\r\nContent-Length: ";
    if (const std::size_t at = lines.find(length); at != std::string::npos) {
        const std::size_t size = head + std::strtoull(lines.c_str() + at + length.size(), nullptr, 10);
        while (wire.size() < size && connection.read(wire)) {
        }
    }
    return wire;
}

WireServer::WireServer(std::string answer)
    : m_answer(std::move(answer)),
      m_server([this](Connection& connection) {
          const std::string wire = readWire(connection);
          {
              const std::lock_guard lock(m_mutex);
              m_wire += wire;
          }
          connection.write(m_answer);
      }),
      m_url(m_server.url())
{}

WireServer::~WireServer()
{
    m_server.stop();
}

std::string WireServer::wire() const
{
    const std::lock_guard lock(m_mutex);
    std::string text = m_wire;
    for (std::size_t at = 0; (at = text.find(place(), at)) != std::string::npos;)
        text.replace(at, place().size(), "HOST");
    return text;
}

std::size_t quietThreadCount()
{
    std::thread([] {}).join(); // the thread sanitizer's own thread comes with the first one
    std::size_t last = threadCount();
    auto since = std::chrono::steady_clock::now();
    waitUntil([&] {
        if (const std::size_t now = threadCount(); now != last) {
            last = now;
            since = std::chrono::steady_clock::now();
        }
        return std::chrono::steady_clock::now() - since > std::chrono::milliseconds(1300);
    });
    return last;
}

std::chrono::milliseconds timeOf(const std::function<void()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

} // namespace orlo::test
