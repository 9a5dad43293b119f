#include "Sockets.h"

#include "Waiting.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace orlo::test {

namespace {

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

Connection::Connection(int descriptor) : m_descriptor(descriptor)
{
    const int on = 1;
    ::setsockopt(m_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Connection::~Connection()
{
    close();
}

bool Connection::read(std::string& buffer)
{
    char piece[65536];
    ssize_t got = 0;
    do {
        got = ::recv(m_descriptor, piece, sizeof piece, 0);
    } while (got < 0 && errno == EINTR);
    if (got < 0)
        noteFailure();
    if (got <= 0)
        return false;
    buffer.append(piece, static_cast<std::size_t>(got));
    return true;
}

bool Connection::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            noteFailure();
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

void Connection::noteFailure()
{
    m_wasReset = m_wasReset || errno == ECONNRESET;
}

bool Connection::isAllSent() const
{
    int unsent = 0;
    return ::ioctl(m_descriptor, SIOCOUTQ, &unsent) != 0 || unsent == 0;
}

void Connection::reset()
{
    // A reset throws away what is on its way.
    waitUntil([this] { return isAllSent(); }, std::chrono::seconds(2));
    const linger now{1, 0};
    ::setsockopt(m_descriptor, SOL_SOCKET, SO_LINGER, &now, sizeof now);
    close();
}

void Connection::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}

void Connection::interrupt()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_descriptor >= 0)
        ::shutdown(m_descriptor, SHUT_RDWR);
}

std::unique_ptr<Connection> connectTo(int port)
{
    auto connection = std::make_unique<Connection>(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = loopback(port);
    const bool isConnected = ::connect(connection->m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (!isConnected)
        connection->noteFailure();
    // A server may take the connection and reset it before this thread has its turn.
    if (!isConnected && !connection->wasReset())
        throw std::runtime_error("can't connect to the loopback address");
    return connection;
}

SocketServer::SocketServer(Serve serve) : m_serve(std::move(serve))
{
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (m_listener < 0 || ::bind(m_listener, generic, length) != 0 || ::listen(m_listener, 128) != 0 ||
        ::getsockname(m_listener, generic, &length) != 0)
        throw std::runtime_error("can't listen on the loopback address");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptAll(); });
}

SocketServer::~SocketServer()
{
    stop();
}

std::string SocketServer::url() const
{
    return "http://127.0.0.1:" + std::to_string(m_port);
}

void SocketServer::acceptAll()
{
    for (;;) {
        const int descriptor = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0 && (errno == EINTR || errno == ECONNABORTED) && !m_stopping)
            continue;
        if (descriptor < 0)
            return;
        const std::lock_guard<std::mutex> lock(m_mutex);
        Session& session = m_sessions.emplace_back(descriptor);
        ++m_accepted;
        session.thread = std::thread([this, &session] {
            m_serve(session.connection);
            session.connection.close();
        });
    }
}

void SocketServer::stop()
{
    if (m_stopping.exchange(true))
        return;
    // Wakes the accepting thread; the port is given back only when nobody uses the descriptor any more.
    ::shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    ::close(m_listener);
    for (Session& session : m_sessions)
        session.connection.interrupt();
    for (Session& session : m_sessions)
        session.thread.join();
}

} // namespace orlo::test
