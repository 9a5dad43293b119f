#include "Listener.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <pthread.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <system_error>

namespace orlo::platform {

namespace {

using namespace std::chrono_literals;

constexpr unsigned workers = 16;
constexpr std::size_t maxIdle = 500;
constexpr auto idleLife = 60s;

[[noreturn]] void fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

int bindTo(int port)
{
    if (port < 0 || port > 65535)
        throw std::runtime_error("there is no port " + std::to_string(port));
    const int listening = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listening < 0)
        fail("can't make a socket");
    const int on = 1;
    ::setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const sockaddr_in address = loopback(port);
    if (::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || ::listen(listening, SOMAXCONN) != 0) {
        const int error = errno;
        ::close(listening);
        errno = error;
        fail("can't listen on port " + std::to_string(port));
    }
    return listening;
}

int portOf(int listening)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

/// sendfile knows no other way not to be signalled when a client has gone.
void blockBrokenPipes()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

} // namespace

Listener::Listener(Serve serve) : m_serve(std::move(serve))
{}

Listener::~Listener()
{
    close();
}

int Listener::open(int port)
{
    m_listening = bindTo(port);
    m_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_stopping = false;
    m_threads.emplace_back([this] { watch(); });
    for (unsigned i = 0; i < workers; ++i)
        m_threads.emplace_back([this] { work(); });
    return portOf(m_listening);
}

void Listener::close()
{
    if (m_threads.empty())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        for (const int socket : m_beingServed)
            ::shutdown(socket, SHUT_RDWR);
    }
    m_readyChanged.notify_all();
    wake();
    for (std::thread& thread : m_threads)
        thread.join();
    m_threads.clear();
    m_idle.clear();
    m_returned.clear();
    m_ready.clear();
    ::close(m_listening);
    ::close(m_wake);
}

void Listener::wake() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake, &one, sizeof one);
}

std::vector<Listener::Idle> Listener::takeReturned()
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t drained = ::read(m_wake, &count, sizeof count);
    const std::lock_guard lock(m_mutex);
    return std::move(m_returned);
}

void Listener::watch()
{
    std::vector<pollfd> sockets;
    while (true) {
        for (Idle& idle : takeReturned())
            m_idle.push_back(std::move(idle));
        dropStale(std::chrono::steady_clock::now());
        // Above the limit new clients wait in the backlog.
        sockets = {{m_wake, POLLIN, 0}, {m_listening, static_cast<short>(m_idle.size() < maxIdle ? POLLIN : 0), 0}};
        for (const Idle& idle : m_idle)
            sockets.push_back({idle.connection->socket(), POLLIN, 0});
        ::poll(sockets.data(), sockets.size(), 1000);
        {
            const std::lock_guard lock(m_mutex);
            if (m_stopping)
                return;
        }
        for (std::size_t i = m_idle.size(); i-- > 0;) {
            if (sockets[i + 2].revents == 0)
                continue;
            dispatch(std::move(m_idle[i].connection));
            m_idle.erase(m_idle.begin() + static_cast<std::ptrdiff_t>(i));
        }
        if (sockets[1].revents != 0)
            acceptOne();
    }
}

void Listener::dropStale(TimePoint now)
{
    m_idle.erase(std::remove_if(m_idle.begin(), m_idle.end(), [now](const Idle& idle) { return now - idle.since > idleLife; }),
                 m_idle.end());
}

void Listener::acceptOne()
{
    const int socket = ::accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) {
        std::this_thread::sleep_for(1ms); // out of descriptors: nothing to do but wait for some to come back
        return;
    }
    m_idle.push_back({std::make_unique<Connection>(socket), std::chrono::steady_clock::now()});
}

void Listener::dispatch(ConnectionPtr connection)
{
    {
        const std::lock_guard lock(m_mutex);
        m_ready.push_back(std::move(connection));
    }
    m_readyChanged.notify_one();
}

Listener::ConnectionPtr Listener::nextReady()
{
    std::unique_lock lock(m_mutex);
    m_readyChanged.wait(lock, [this] { return m_stopping || !m_ready.empty(); });
    if (m_stopping)
        return nullptr;
    ConnectionPtr connection = std::move(m_ready.front());
    m_ready.pop_front();
    m_beingServed.insert(connection->socket());
    return connection;
}

void Listener::work()
{
    blockBrokenPipes();
    while (ConnectionPtr connection = nextReady())
        serve(std::move(connection));
}

void Listener::serve(ConnectionPtr connection)
{
    bool goesOn = true;
    do
        goesOn = m_serve(*connection);
    while (goesOn && connection->hasInput());
    if (goesOn)
        giveBack(std::move(connection));
    else
        retire(std::move(connection));
}

void Listener::giveBack(ConnectionPtr connection)
{
    {
        const std::lock_guard lock(m_mutex);
        m_beingServed.erase(connection->socket());
        m_returned.push_back({std::move(connection), std::chrono::steady_clock::now()});
    }
    wake();
}

void Listener::retire(ConnectionPtr connection)
{
    if (!connection->broken())
        connection->finish();
    const std::lock_guard lock(m_mutex);
    m_beingServed.erase(connection->socket());
    connection.reset(); // under the lock: `close` must not shut down a socket number that has been given away again
}

} // namespace orlo::platform
