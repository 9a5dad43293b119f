#include "RawServer.h"

#include <BaseCommon/Text.h>

#include <algorithm>
#include <utility>

namespace orlo::test {

RawAnswer RawAnswer::bytes(std::string text)
{
    RawAnswer answer;
    answer.text = std::move(text);
    return answer;
}

RawAnswer RawAnswer::resetBeforeAnswer()
{
    return resetAfter({}, 0);
}

RawAnswer RawAnswer::resetOnConnect()
{
    RawAnswer answer = resetBeforeAnswer();
    answer.readsRequest = false;
    return answer;
}

RawAnswer RawAnswer::resetAfter(std::string text, std::size_t count)
{
    RawAnswer answer = closeAfter(std::move(text), count);
    answer.end = End::reset;
    return answer;
}

RawAnswer RawAnswer::closeAfter(std::string text, std::size_t count)
{
    return bytes(text.substr(0, count));
}

RawAnswer RawAnswer::stall(std::string text)
{
    RawAnswer answer = bytes(std::move(text));
    answer.stalls = true;
    return answer;
}

RawAnswer& RawAnswer::fragments(std::size_t size)
{
    fragmentSize = size;
    return *this;
}

std::string rawOk(const std::string& body, const std::string& contentType)
{
    return "HTTP/1.1 200 OK\r\nContent-Type: " + contentType + "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

RawServer::RawServer(RawAnswer answer) : RawServer(std::vector<RawAnswer>{std::move(answer)})
{}

RawServer::RawServer(std::vector<RawAnswer> answers)
    : m_answers(answers.begin(), answers.end()), m_server([this](Connection& connection) { serve(connection); })
{}

RawServer::~RawServer()
{
    release();
    m_server.stop();
}

std::wstring RawServer::wideUrl() const
{
    return utils::toWstring(url());
}

std::vector<Request> RawServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

void RawServer::release()
{
    const std::lock_guard lock(m_mutex);
    m_go = true;
    m_released.notify_all();
}

RawAnswer RawServer::nextAnswer()
{
    const std::lock_guard lock(m_mutex);
    RawAnswer answer = m_answers.front();
    if (m_answers.size() > 1)
        m_answers.pop_front();
    return answer;
}

void RawServer::waitForRelease()
{
    std::unique_lock lock(m_mutex);
    m_released.wait(lock, [this] { return m_go; });
}

void RawServer::serve(Connection& connection)
{
    const RawAnswer answer = nextAnswer();
    Request request;
    if (answer.readsRequest) {
        if (readRequest(connection, request) != ReadResult::request)
            return;
        const std::lock_guard lock(m_mutex);
        m_requests.push_back(request);
    }
    if (answer.stalls)
        waitForRelease();
    const std::size_t piece = answer.fragmentSize > 0 ? answer.fragmentSize : std::max<std::size_t>(answer.text.size(), 1);
    for (std::size_t at = 0; at < answer.text.size(); at += piece) {
        if (!connection.write(std::string_view(answer.text).substr(at, piece)))
            return;
    }
    if (answer.end == RawAnswer::End::reset)
        connection.reset();
}

} // namespace orlo::test
