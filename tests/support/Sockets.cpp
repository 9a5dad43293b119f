#include "Sockets.h"

#include "Waiting.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
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
    const std::lock_guard lock(m_mutex);
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}

void Connection::interrupt()
{
    const std::lock_guard lock(m_mutex);
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

std::unique_ptr<Connection> beginToConnect(int port)
{
    auto connection = std::make_unique<Connection>(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_in address = loopback(port);
    ::connect(connection->m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return connection;
}

Listener::Listener(int queue, Version version) : m_version(version)
{
    union
    {
        sockaddr any;
        sockaddr_in four;
        sockaddr_in6 six;
    } address{};
    socklen_t length = sizeof address;
    if (version == Version::four) {
        address.four = loopback(0);
        length = sizeof address.four;
    }
    else {
        address.six.sin6_family = AF_INET6;
        address.six.sin6_addr = in6addr_loopback;
    }
    m_descriptor = ::socket(address.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isListening = m_descriptor >= 0 && ::bind(m_descriptor, &address.any, length) == 0 && ::listen(m_descriptor, queue) == 0 &&
                             ::getsockname(m_descriptor, &address.any, &length) == 0;
    if (isListening)
        m_port = ntohs(version == Version::four ? address.four.sin_port : address.six.sin6_port);
    else if (version == Version::four)
        throw std::runtime_error("can't listen on the loopback address");
}

Listener::~Listener()
{
    close();
}

std::string Listener::place() const
{
    return (m_version == Version::four ? "127.0.0.1:" : "[::1]:") + std::to_string(m_port);
}

std::unique_ptr<Connection> Listener::accept()
{
    int descriptor = -1;
    do {
        descriptor = ::accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    } while (descriptor < 0 && (errno == EINTR || errno == ECONNABORTED));
    return descriptor < 0 ? nullptr : std::make_unique<Connection>(descriptor);
}

void Listener::interrupt()
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}

void Listener::close()
{
    if (m_descriptor >= 0)
        ::close(std::exchange(m_descriptor, -1));
}

SocketServer::SocketServer(Serve serve) : m_serve(std::move(serve)), m_acceptor([this] { acceptAll(); })
{}

SocketServer::~SocketServer()
{
    stop();
}

void SocketServer::acceptAll()
{
    while (auto connection = m_listener.accept()) {
        const std::lock_guard lock(m_mutex);
        Session& session = m_sessions.emplace_back();
        session.connection = std::move(connection);
        ++m_accepted;
        session.thread = std::thread([this, &session] {
            m_serve(*session.connection);
            session.connection->close();
        });
    }
}

void SocketServer::stop()
{
    if (m_isStopped.exchange(true))
        return;
    m_listener.interrupt();
    m_acceptor.join();
    m_listener.close();
    for (Session& session : m_sessions)
        session.connection->interrupt();
    for (Session& session : m_sessions)
        session.thread.join();
}

} // namespace orlo::test
