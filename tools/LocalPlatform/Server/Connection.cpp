#include "Connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/sockios.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/sendfile.h>
#include <thread>
#include <utility>

namespace orlo::platform {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 30s;   // for a client that stalls in the middle of a request or an answer
constexpr auto farewell = 500ms; // for a client to close its end
const std::string headEnd = "\r\n\r\n";

} // namespace

Connection::Connection(int socket) : m_socket(socket)
{
    const int on = 1;
    ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    const timeval timeout{std::chrono::seconds(patience).count(), 0}; // bounds sendfile, which has no poll of its own
    ::setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
}

Connection::~Connection()
{
    ::close(m_socket);
}

Connection*& Connection::current()
{
    thread_local Connection* connection = nullptr;
    return connection;
}

void Connection::setTrap(const Trap& trap)
{
    m_trap = trap;
    m_headDone = false;
    m_headTail.clear();
}

void Connection::carryOut(const Trap& trap)
{
    if (trap.action == Action::Stall) {
        m_broken = waitFor(POLLRDHUP, trap.pause); // the client has gone, or the server stops
        return;
    }
    m_broken = true;
    if (trap.action == Action::Close) {
        finish();
        return;
    }
    waitUntilSent(); // a reset throws away what the client's side hasn't taken yet
    const linger abortive{1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &abortive, sizeof abortive);
}

void Connection::sendBody()
{
    const auto body = std::exchange(m_body, nullptr);
    if (body && !m_broken)
        body(*this);
}

void Connection::endAnswer()
{
    m_body = nullptr;
    const auto trap = std::exchange(m_trap, std::nullopt);
    if (trap && !m_broken && trap->action != Action::Stall)
        carryOut(*trap);
}

void Connection::finish()
{
    ::shutdown(m_socket, SHUT_WR);
    const auto end = std::chrono::steady_clock::now() + farewell;
    std::array<char, 4096> rest{};
    while (std::chrono::steady_clock::now() < end && waitFor(POLLIN, farewell)) {
        if (::recv(m_socket, rest.data(), rest.size(), 0) <= 0)
            return;
    }
}

bool Connection::waitFor(short events, std::chrono::milliseconds timeout) const
{
    pollfd entry{m_socket, events, 0};
    int ready = 0;
    do
        ready = ::poll(&entry, 1, static_cast<int>(timeout.count()));
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

void Connection::beginRequest()
{
    m_inRequestLine = true;
    m_inQuery = false;
    m_escaped.clear();
}

bool Connection::is_readable() const
{
    return !m_escaped.empty() || hasInput() || waitFor(POLLIN, patience);
}

bool Connection::is_writable() const
{
    return !m_broken && waitFor(POLLOUT, patience);
}

ssize_t Connection::receive(char* data, std::size_t size)
{
    if (!waitFor(POLLIN, patience))
        return -1;
    ssize_t count = 0;
    do
        count = ::recv(m_socket, data, size, 0);
    while (count < 0 && errno == EINTR);
    return count;
}

ssize_t Connection::read(char* data, std::size_t size)
{
    return m_inRequestLine || !m_escaped.empty() ? readOfRequestLine(data) : readBuffered(data, size);
}

// A question mark may stand in a query, but the HTTP library doesn't understand an address with two of them.
ssize_t Connection::readOfRequestLine(char* data)
{
    if (m_escaped.empty()) {
        const ssize_t count = readBuffered(data, 1);
        if (count <= 0)
            return count;
        m_escaped = *data == '?' && m_inQuery ? "%3F" : std::string(1, *data);
        m_inQuery = m_inQuery || *data == '?';
        m_inRequestLine = *data != '\n';
    }
    *data = m_escaped.front();
    m_escaped.erase(0, 1);
    return 1;
}

ssize_t Connection::readBuffered(char* data, std::size_t size)
{
    if (!hasInput() && size >= m_buffer.size())
        return receive(data, size);
    if (!hasInput()) {
        const ssize_t count = receive(m_buffer.data(), m_buffer.size());
        if (count <= 0)
            return count;
        m_from = 0;
        m_to = static_cast<std::size_t>(count);
    }
    const std::size_t count = std::min(size, m_to - m_from);
    std::memcpy(data, m_buffer.data() + m_from, count);
    m_from += count;
    return static_cast<ssize_t>(count);
}

std::size_t Connection::headPart(const char* data, std::size_t size)
{
    std::size_t headBytes = 0;
    for (; !m_headDone && headBytes < size; ++headBytes) {
        m_headTail += data[headBytes];
        m_headTail.erase(0, m_headTail.size() > headEnd.size() ? 1 : 0);
        m_headDone = m_headTail == headEnd;
    }
    return headBytes;
}

std::size_t Connection::allowance(const char* data, std::size_t size)
{
    if (!m_trap)
        return size;
    const std::size_t exempt = m_trap->bodyOnly && data ? headPart(data, size) : 0;
    const std::size_t counted = std::min(size - exempt, m_trap->bytes);
    m_trap->bytes -= counted;
    return exempt + counted;
}

template <class Send>
bool Connection::pushOut(const char* data, std::size_t size, const Send& send)
{
    std::size_t sent = 0;
    while (!m_broken && sent < size) {
        const std::size_t allowed = allowance(data ? data + sent : nullptr, size - sent);
        m_broken = !send(sent, allowed);
        sent += allowed;
        if (!m_broken && sent < size)
            carryOut(*std::exchange(m_trap, std::nullopt));
    }
    return !m_broken;
}

ssize_t Connection::write(const char* data, std::size_t size)
{
    const bool sent = pushOut(data, size, [&](std::size_t from, std::size_t count) { return sendAll(data + from, count); });
    return sent ? static_cast<ssize_t>(size) : -1;
}

bool Connection::sendFile(int file, std::int64_t offset, std::size_t size)
{
    return pushOut(nullptr, size, [&](std::size_t from, std::size_t count) {
        return sendFilePart(file, offset + static_cast<std::int64_t>(from), count);
    });
}

bool Connection::sendFilePart(int file, std::int64_t offset, std::size_t size)
{
    off_t at = offset;
    while (size > 0) {
        const ssize_t count = ::sendfile(m_socket, file, &at, size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

bool Connection::sendAll(const char* data, std::size_t size)
{
    while (size > 0) {
        if (!waitFor(POLLOUT, patience))
            return false;
        const ssize_t count = ::send(m_socket, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && (errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK))
            continue;
        if (count <= 0)
            return false;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

void Connection::waitUntilSent() const
{
    const auto end = std::chrono::steady_clock::now() + 2s;
    int unsent = 0;
    while (::ioctl(m_socket, SIOCOUTQ, &unsent) == 0 && unsent > 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(1ms);
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const
{
    ip = "127.0.0.1";
    port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const
{
    ip = "127.0.0.1";
    port = 0;
}

} // namespace orlo::platform
