#include "RequestBody.h"

#include "Answer.h"

#include <algorithm>

namespace orlo::platform {

namespace {

constexpr std::size_t bufferSize = 1024 * 1024;

} // namespace

std::size_t RequestBody::readable() const
{
    const std::uint64_t wanted = std::min<std::uint64_t>(m_left, m_buffer.size());
    return static_cast<std::size_t>(m_trap ? std::min<std::uint64_t>(wanted, m_trap->bytes) : wanted);
}

void RequestBody::springTrap()
{
    const Connection::Trap trap = *m_trap;
    m_trap.reset();
    m_connection.carryOut(trap);
    if (m_connection.broken())
        throw Refusal(400, "the connection was ended");
}

std::string_view RequestBody::next()
{
    if (m_trap && (m_trap->bytes == 0 || m_left == 0))
        springTrap();
    if (m_left == 0)
        return {};
    m_buffer.resize(bufferSize);
    const ssize_t count = m_connection.read(m_buffer.data(), readable());
    if (count <= 0) {
        m_left = 0;
        m_connection.leave();
        throw Refusal(400, "the body ended early");
    }
    const auto bytes = static_cast<std::size_t>(count);
    m_left -= bytes;
    if (m_trap)
        m_trap->bytes -= bytes;
    return {m_buffer.data(), bytes};
}

void RequestBody::skipRest()
{
    try {
        while (!m_connection.broken() && !next().empty())
            ;
    }
    catch (const Refusal&) { // the client has gone; the connection knows
    }
}

} // namespace orlo::platform
