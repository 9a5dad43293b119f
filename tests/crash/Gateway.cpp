#include "Gateway.h"

#include <utility>

namespace orlo::test {

namespace {

int portOf(const std::string& url)
{
    return std::stoi(url.substr(url.rfind(':') + 1));
}

bool isSentAnew(const std::string& header)
{
    static const Headers all{{"Host", {}}, {"Connection", {}}, {"Content-Length", {}}, {"Transfer-Encoding", {}}, {"Expect", {}}};
    return Request{{}, {}, all, {}}.hasHeader(header);
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

} // namespace

Gateway::Gateway(const std::string& platformUrl) : m_platformUrl(platformUrl), m_server([this](Connection& client) { serve(client); })
{}

Gateway::~Gateway()
{
    m_server.stop();
}

void Gateway::watch(Watch watch)
{
    const std::lock_guard lock(m_mutex);
    m_watch = std::move(watch);
    m_lastNumber = 0;
}

bool Gateway::goesOn(int number, Moment moment) const
{
    Watch watch;
    {
        const std::lock_guard lock(m_mutex);
        watch = m_watch;
    }
    return !watch || watch(number, moment);
}

int Gateway::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_lastNumber;
}

int Gateway::nextNumber()
{
    const std::lock_guard lock(m_mutex);
    return ++m_lastNumber;
}

void Gateway::serve(Connection& client)
{
    Request request;
    if (readRequest(client, request) == ReadResult::request)
        exchange(client, request);
}

void Gateway::exchange(Connection& client, const Request& request)
{
    const int number = nextNumber();
    if (!goesOn(number, Moment::asked))
        return;
    const std::string reply = withOwnAddresses(askPlatform(request));
    if (!goesOn(number, Moment::carriedOut))
        return;
    client.write(reply);
    goesOn(number, Moment::answered);
}

std::string Gateway::askPlatform(const Request& request) const
{
    const int port = portOf(m_platformUrl);
    std::string head = request.line() + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port) + "\r\nConnection: close\r\n" +
                       "Content-Length: " + std::to_string(request.body.size()) + "\r\n";
    for (const auto& [name, value] : request.headers) {
        if (!isSentAnew(name))
            head.append(name).append(": ").append(value).append("\r\n");
    }
    const auto platform = connectTo(port);
    std::string reply;
    platform->write(head + "\r\n" + request.body);
    while (platform->read(reply)) {
    }
    return reply;
}

// The platform's answers carry their length, which changes with the addresses in them; their end is that of the connection as well.
std::string Gateway::withOwnAddresses(const std::string& reply) const
{
    const std::size_t headEnd = reply.find("\r\n\r\n");
    if (headEnd == std::string::npos || reply.find(m_platformUrl, headEnd) == std::string::npos)
        return reply;
    std::string body = reply.substr(headEnd + 4);
    replaceAll(body, m_platformUrl, url());
    return reply.substr(0, reply.find("\r\n") + 2) +
           "Content-Type: application/json\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

} // namespace orlo::test
