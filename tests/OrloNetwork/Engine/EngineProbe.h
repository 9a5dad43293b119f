#pragma once

#include "support/ErrorNumbers.h"
#include "support/ProcessProbe.h"
#include "support/Sanitized.h"
#include "support/Sockets.h"

#include <OrloNetwork/WebRequest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace orlo::test {

/// Where a request is carried: on the thread of its caller, or on the loop's.
enum class Way { here, loop };

std::ostream& operator<<(std::ostream& out, Way way);

struct Sending
{
    OrloWebService::Traffic traffic = OrloWebService::Traffic::calls;
    std::chrono::milliseconds timeout{10000};
    pplx::cancellation_token token = pplx::cancellation_token::none(); ///< on the loop
};

/// What became of a request.
struct Outcome
{
    int status = 0; ///< 0: no head of an answer came
    std::string reason;
    web::http::http_headers headers;
    std::string body;
    bool hasFailed = false;
    int number = 0;   ///< of the failure; -1 where it is none of the transport
    std::string text; ///< of the failure

    std::string header(const std::string& name) const;
};

/// With the header "User-Agent: probe" and no other.
web::http::http_request requestOf(const std::string& method, const std::string& path);
web::http::http_request requestOf(const std::string& method, const std::string& path, const std::string& body,
                                  const std::string& type = "application/json");

Outcome outcomeOf(Way way, const std::string& url, web::http::http_request request, const Sending& sending = {});
/// The same on the loop, without waiting for it.
pplx::task<Outcome> begin(const std::string& url, web::http::http_request request, const Sending& sending = {});
/// Sends "GET /thing".
Outcome outcomeOf(Way way, const std::string& url, const Sending& sending = {});

bool isWorthAnotherAttempt(const Outcome& outcome);

/// Takes requests as they come over the wire, and gives each the same answer; then it closes the connection.
class WireServer
{
public:
    explicit WireServer(std::string answer = "HTTP/1.1 204 No Content\r\n\r\n");
    ~WireServer();

    const std::string& url() const { return m_url; }
    /// "127.0.0.1:<port>"
    std::string place() const { return m_url.substr(7); }
    /// All bytes, with HOST for the place.
    std::string wire() const;
    std::size_t connectionCount() const { return m_server.connectionCount(); }

private:
    const std::string m_answer;
    mutable std::mutex m_mutex;
    std::string m_wire;
    SocketServer m_server;
    const std::string m_url;
};

/// Reads the bytes of one whole request.
std::string readWire(Connection& connection);

/// The threads of this process when none has come or gone for longer than threads of the library stay idle.
std::size_t quietThreadCount();

/// Measures how long something takes.
std::chrono::milliseconds timeOf(const std::function<void()>& work);

} // namespace orlo::test
