#include "DelayProxy.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace orlo::bench {

namespace {

constexpr int on = 1;

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    return address;
}

int newSocket()
{
    const int made = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ::setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return made;
}

} // namespace

class DelayProxy::Connection
{
public:
    Connection(int client, int server, Clock::time_point ready) : m_up{client, server, {}, ready}, m_down{server, client, {}, ready} {}
    ~Connection()
    {
        ::close(m_up.from);
        ::close(m_up.to);
    }

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Direction& up() { return m_up; }
    Direction& down() { return m_down; }
    bool done() const { return m_up.done && m_down.done; }

private:
    Direction m_up;
    Direction m_down;
};

DelayProxy::DelayProxy(std::chrono::milliseconds delay) : m_delay(delay)
{}

DelayProxy::~DelayProxy()
{
    m_ends = true;
    if (m_thread.joinable())
        m_thread.join();
    for (const Door& door : m_doors)
        ::close(door.listener);
}

int DelayProxy::leadTo(int port)
{
    const int listener = newSocket();
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    const auto generic = reinterpret_cast<sockaddr*>(&address);
    if (::bind(listener, generic, size) != 0 || ::listen(listener, 1024) != 0 || ::getsockname(listener, generic, &size) != 0)
        throw std::runtime_error("can't listen");
    m_doors.push_back({listener, port});
    return ntohs(address.sin_port);
}

void DelayProxy::start()
{
    m_thread = std::thread([this] { run(); });
}

void DelayProxy::accept(const Door& door)
{
    const int client = ::accept4(door.listener, nullptr, nullptr, SOCK_CLOEXEC);
    const int server = newSocket();
    const sockaddr_in address = loopback(door.port);
    if (client < 0 || ::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(client);
        ::close(server);
        return;
    }
    ::setsockopt(client, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    m_connections.push_back(std::make_unique<Connection>(client, server, Clock::now() + 3 * m_delay));
}

void DelayProxy::receive(Direction& direction) const
{
    char room[64 * 1024];
    const ssize_t count = ::recv(direction.from, room, sizeof room, MSG_DONTWAIT);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    direction.ended = count <= 0;
    direction.pieces.push_back({std::max(Clock::now() + m_delay, direction.notBefore),
                                count > 0 ? std::string(room, static_cast<std::size_t>(count)) : std::string()});
}

/// What is due goes out, as much as the receiver takes.
void DelayProxy::deliver(Direction& direction, Clock::time_point now)
{
    while (!direction.pieces.empty() && direction.pieces.front().due <= now) {
        std::string& bytes = direction.pieces.front().bytes;
        if (bytes.empty()) {
            ::shutdown(direction.to, SHUT_WR);
            direction.done = true;
            return direction.pieces.clear();
        }
        const ssize_t count = ::send(direction.to, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (count < 0) { // the receiver is gone; the sender learns it by the end of the other direction
            direction.done = true;
            direction.ended = true;
            return direction.pieces.clear();
        }
        bytes.erase(0, static_cast<std::size_t>(count));
        if (bytes.empty())
            direction.pieces.pop_front();
    }
}

void DelayProxy::run()
{
    while (!m_ends) {
        std::vector<pollfd> watched;
        std::vector<Direction*> directions;
        Clock::time_point next = Clock::now() + std::chrono::milliseconds(50); // to see the end
        for (const Door& door : m_doors)
            watched.push_back({door.listener, POLLIN, 0});
        for (const auto& connection : m_connections) {
            for (Direction* direction : {&connection->up(), &connection->down()}) {
                // poll ignores what is negative; a full receiver is tried again within a millisecond
                watched.push_back({direction->ended ? -1 : direction->from, POLLIN, 0});
                directions.push_back(direction);
                if (!direction->pieces.empty())
                    next = std::min(next, std::max(direction->pieces.front().due, Clock::now() + std::chrono::microseconds(200)));
            }
        }
        const auto wait = std::chrono::duration_cast<std::chrono::nanoseconds>(std::max(next - Clock::now(), Clock::duration::zero()));
        const timespec time{wait.count() / 1'000'000'000, wait.count() % 1'000'000'000};
        if (::ppoll(watched.data(), watched.size(), &time, nullptr) < 0)
            continue;
        for (std::size_t i = 0; i < directions.size(); ++i) {
            if (watched[m_doors.size() + i].revents != 0)
                receive(*directions[i]);
            deliver(*directions[i], Clock::now());
        }
        for (std::size_t i = 0; i < m_doors.size(); ++i) {
            if (watched[i].revents != 0)
                accept(m_doors[i]);
        }
        m_connections.erase(std::remove_if(m_connections.begin(), m_connections.end(), [](const auto& each) { return each->done(); }),
                            m_connections.end());
    }
}

} // namespace orlo::bench
