#include "ScriptedServer.h"

#include <BaseCommon/Text.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace orlo::test {

namespace {

// Long bodies would bury the report.
std::string shown(const std::string& text)
{
    constexpr std::size_t longest = 2000;
    return text.size() <= longest ? text : text.substr(0, longest) + "... (" + std::to_string(text.size()) + " bytes)";
}

Reply refusal()
{
    Reply reply;
    reply.status = 418;
    reply.body = "this request was not expected";
    reply.contentType = "text/plain";
    return reply;
}

} // namespace

Expectation::Expectation(std::mutex& mutex, std::string method, std::string target)
    : m_mutex(mutex), m_method(std::move(method)), m_target(std::move(target)), m_answer([](const Request&) { return Reply{}; })
{}

Expectation& Expectation::body(const std::string& bytes)
{
    const std::lock_guard lock(m_mutex);
    m_body = bytes;
    return *this;
}

Expectation& Expectation::anyBody()
{
    const std::lock_guard lock(m_mutex);
    m_body.reset();
    return *this;
}

Expectation& Expectation::header(const std::string& name, const std::string& value)
{
    const std::lock_guard lock(m_mutex);
    m_headers.emplace_back(name, value);
    return *this;
}

Expectation& Expectation::withoutHeader(const std::string& name)
{
    const std::lock_guard lock(m_mutex);
    m_absent.push_back(name);
    return *this;
}

Expectation& Expectation::times(unsigned count)
{
    const std::lock_guard lock(m_mutex);
    m_left = count;
    return *this;
}

Expectation& Expectation::reply(int status, const std::string& body, const std::string& contentType)
{
    Reply answer;
    answer.status = status;
    answer.body = body;
    answer.contentType = contentType;
    return reply(answer);
}

Expectation& Expectation::reply(const Reply& reply)
{
    return replyWith([reply](const Request&) { return reply; });
}

Expectation& Expectation::replyWith(Answer answer)
{
    const std::lock_guard lock(m_mutex);
    m_answer = std::move(answer);
    return *this;
}

Expectation& Expectation::reset()
{
    Reply none;
    none.reset = true;
    return reply(none);
}

std::vector<std::string> Expectation::differences(const Request& request) const
{
    std::vector<std::string> found;
    if (m_body && *m_body != request.body)
        found.push_back(line() + ": expected the body\n  " + shown(*m_body) + "\ngot\n  " + shown(request.body));
    for (const auto& [name, value] : m_headers) {
        if (!request.hasHeader(name))
            found.push_back(line() + ": expected the header " + name + ": " + value + ", got none");
        else if (request.header(name) != value)
            found.push_back(line() + ": expected the header " + name + ": " + value + ", got " + request.header(name));
    }
    for (const std::string& name : m_absent) {
        if (request.hasHeader(name))
            found.push_back(line() + ": expected no header " + name + ", got " + request.header(name));
    }
    return found;
}

ScriptedServer::ScriptedServer() : m_server([this](Connection& connection) { serve(connection); })
{}

ScriptedServer::~ScriptedServer()
{
    m_server.stop();
    verify();
}

std::string ScriptedServer::url() const
{
    return m_server.url();
}

std::wstring ScriptedServer::wideUrl() const
{
    return utils::toWstring(url());
}

Expectation& ScriptedServer::expect(const std::string& method, const std::string& target)
{
    const std::lock_guard lock(m_mutex);
    return *m_script.emplace_back(std::make_unique<Expectation>(m_mutex, method, target));
}

Expectation& ScriptedServer::always(const std::string& method, const std::string& target)
{
    const std::lock_guard lock(m_mutex);
    Expectation& added = *m_always.emplace_back(std::make_unique<Expectation>(m_mutex, method, target));
    added.m_body.reset();
    return added;
}

void ScriptedServer::anyOrder()
{
    const std::lock_guard lock(m_mutex);
    m_anyOrder = true;
}

std::vector<Request> ScriptedServer::requests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

std::size_t ScriptedServer::requestCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_requests.size();
}

std::size_t ScriptedServer::count(const std::string& method, const std::string& target) const
{
    const std::string line = method + ' ' + target;
    const auto all = requests();
    return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [&](const Request& request) { return request.line() == line; }));
}

std::size_t ScriptedServer::connectionCount() const
{
    return m_server.connectionCount();
}

bool ScriptedServer::waitForRequests(std::size_t count, std::chrono::milliseconds bound) const
{
    std::unique_lock lock(m_mutex);
    return m_arrived.wait_for(lock, bound, [&] { return m_requests.size() >= count; });
}

bool ScriptedServer::waitForProblem(std::chrono::milliseconds bound) const
{
    std::unique_lock lock(m_mutex);
    return m_arrived.wait_for(lock, bound, [&] { return !m_problems.empty(); });
}

void ScriptedServer::verify()
{
    std::vector<std::string> problems;
    {
        const std::lock_guard lock(m_mutex);
        problems.swap(m_problems);
        for (const auto& expected : m_script) {
            if (expected->m_left > 0)
                problems.push_back("expected but did not come: " + expected->line());
            expected->m_left = 0;
        }
    }
    for (const std::string& problem : problems)
        ADD_FAILURE() << problem;
}

void ScriptedServer::serve(Connection& connection)
{
    for (;;) {
        Request request;
        const ReadResult result = readRequest(connection, request);
        if (result == ReadResult::malformed)
            report("a request that was cut short or is no HTTP/1.1: " + request.line());
        if (result != ReadResult::request)
            return;
        const Reply reply = answer(request);
        if (reply.reset)
            return connection.reset();
        if (!connection.write(reply.wire(request.method)) || request.header("Connection") == "close")
            return;
    }
}

Reply ScriptedServer::answer(const Request& request)
{
    // The answer is computed outside the lock: it may ask the server about earlier requests.
    const Expectation::Answer answer = choose(request);
    return answer ? answer(request) : refusal();
}

Expectation::Answer ScriptedServer::choose(const Request& request)
{
    const std::lock_guard lock(m_mutex);
    m_requests.push_back(request);
    m_arrived.notify_all();
    Expectation* const expected = next(request);
    if (!expected)
        return {};
    for (std::string& difference : expected->differences(request))
        m_problems.push_back(std::move(difference));
    return expected->m_answer;
}

// The lock is held. A request out of order fails the test even where it would be expected later.
Expectation* ScriptedServer::next(const Request& request)
{
    const auto pending = [](const auto& expected) { return expected->m_left > 0; };
    const auto wanted = [&](const auto& expected) { return pending(expected) && expected->fits(request); };
    const auto first = std::find_if(m_script.begin(), m_script.end(), pending);
    const auto found =
        m_anyOrder || first == m_script.end() || wanted(*first) ? std::find_if(first, m_script.end(), wanted) : m_script.end();
    if (found != m_script.end()) {
        --(*found)->m_left;
        return found->get();
    }
    const auto repeated = std::find_if(m_always.begin(), m_always.end(), [&](const auto& kept) { return kept->fits(request); });
    if (repeated != m_always.end())
        return repeated->get();
    const std::string due = first == m_script.end() ? "no request" : m_anyOrder ? "another request" : (*first)->line();
    m_problems.push_back("expected " + due + ", got " + request.line() + "\n  " + shown(request.body));
    return nullptr;
}

void ScriptedServer::report(const std::string& problem)
{
    const std::lock_guard lock(m_mutex);
    m_problems.push_back(problem);
    m_arrived.notify_all();
}

} // namespace orlo::test
