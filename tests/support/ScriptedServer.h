#pragma once

#include "HttpExchange.h"
#include "Sockets.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orlo::test {

/// One expected request and its answer. Without body() or anyBody() the request must have no body.
class Expectation
{
public:
    using Answer = std::function<Reply(const Request&)>;

    Expectation(std::mutex& mutex, std::string method, std::string target);

    Expectation& body(const std::string& bytes);
    Expectation& anyBody();
    /// The request must carry the header with exactly this value.
    Expectation& header(const std::string& name, const std::string& value);
    Expectation& withoutHeader(const std::string& name);
    Expectation& times(unsigned count);

    /// An empty content type means none.
    Expectation& reply(int status, const std::string& body = {}, const std::string& contentType = "application/json");
    Expectation& reply(const Reply& reply);
    Expectation& replyWith(Answer answer);
    /// Reads the request and resets the connection.
    Expectation& reset();

private:
    friend class ScriptedServer;

    std::string line() const { return m_method + ' ' + m_target; }
    bool fits(const Request& request) const { return request.line() == line(); }
    std::vector<std::string> differences(const Request& request) const;

    std::mutex& m_mutex;
    std::string m_method;
    std::string m_target;
    std::optional<std::string> m_body = std::string();
    Headers m_headers;
    std::vector<std::string> m_absent;
    unsigned m_left = 1;
    Answer m_answer;
};

/// An HTTP server in this process which plays a script: the expected requests in order, each with its answer.
/// A request that was not expected, comes in another order or differs, and one that never comes, fail the test at
/// verify() or at the end of the server. A request that was not expected is answered with 418.
class ScriptedServer
{
public:
    ScriptedServer();
    ~ScriptedServer();

    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;

    /// "http://127.0.0.1:<port>"
    std::string url() const;
    std::wstring wideUrl() const;
    int port() const { return m_server.port(); }

    /// Adds to the script. The target is compared as it stands on the wire, query included.
    Expectation& expect(const std::string& method, const std::string& target);
    /// Answers the request whenever it comes outside the script, any number of times; its body is not looked at unless told.
    Expectation& always(const std::string& method, const std::string& target);
    /// The expected requests may come in any order.
    void anyOrder();

    std::vector<Request> requests() const;
    std::size_t requestCount() const;
    std::size_t count(const std::string& method, const std::string& target) const;
    std::size_t connectionCount() const;
    /// Waits until so many requests have come.   Returns: whether they have.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds bound = std::chrono::seconds(20)) const;
    /// Waits until something has gone wrong.   Returns: whether it has.
    bool waitForProblem(std::chrono::milliseconds bound = std::chrono::seconds(20)) const;

    /// Fails the test for all that went wrong since the last call, and for expected requests that did not come.
    void verify();

private:
    void serve(Connection& connection);
    Reply answer(const Request& request);
    Expectation::Answer choose(const Request& request);
    Expectation* next(const Request& request);
    void report(const std::string& problem);

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_arrived;
    std::deque<std::unique_ptr<Expectation>> m_script;
    std::deque<std::unique_ptr<Expectation>> m_always;
    std::vector<Request> m_requests;
    std::vector<std::string> m_problems;
    bool m_anyOrder = false;
    SocketServer m_server; // last: its threads use all of the above
};

} // namespace orlo::test
