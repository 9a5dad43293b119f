#pragma once

#include "Connection.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace orlo::platform {

/// The body of a request that is read from its connection while the call is answered.
class RequestBody
{
public:
    RequestBody(Connection& connection, std::uint64_t length) : m_connection(connection), m_left(length) {}

    /// What happens after as many bytes of the body, or at its end if that comes first.
    void setTrap(const Connection::Trap& trap) { m_trap = trap; }

    /// The next piece, good until the next call; empty at the end. Refused with 400 if the client ends too early.
    std::string_view next();
    /// Takes what is left off the connection, so that the answer is heard and the next request is found.
    void skipRest();

private:
    void springTrap();
    std::size_t readable() const;

    Connection& m_connection;
    std::uint64_t m_left;
    std::optional<Connection::Trap> m_trap;
    std::vector<char> m_buffer;
};

} // namespace orlo::platform
