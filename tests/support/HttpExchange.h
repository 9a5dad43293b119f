#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orlo::test {

class Connection;

using Headers = std::vector<std::pair<std::string, std::string>>;

/// A request as it came over the wire.
struct Request
{
    std::string method;
    std::string target; ///< exactly as sent
    Headers headers;    ///< in the order and spelling of the wire
    std::string body;   ///< the bytes; a chunked body is put together, a compressed one stays compressed

    bool hasHeader(const std::string& name) const;
    /// The first header of that name, in any case; empty if there is none.
    std::string header(const std::string& name) const;
    /// "GET /projects?scenario=DEFAULT"
    std::string line() const { return method + ' ' + target; }
};

struct Reply
{
    int status = 200;
    std::string body;
    std::string contentType = "application/json"; ///< empty: no such header
    Headers headers;
    bool reset = false; ///< no answer at all: the connection is reset

    /// The bytes of the answer. An answer to HEAD, a 204 and a 304 have no body.
    std::string wire(const std::string& method) const;
};

enum class ReadResult { request, end, malformed };

/// Reads one request. `end`: the peer closed between requests.
ReadResult readRequest(Connection& connection, Request& request);

} // namespace orlo::test
