#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace orlo::test {

/// A connected socket of a test server.
class Connection
{
public:
    explicit Connection(int descriptor);
    ~Connection();

    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Appends what came to `buffer`; waits for it.   Returns: false at the end or on a broken connection.
    bool read(std::string& buffer);
    bool write(std::string_view bytes);
    /// Ends the connection with a reset instead of a close. What was written reaches the peer before.
    void reset();
    void close();
    /// Wakes a thread that reads or writes; the descriptor stays.
    void interrupt();
    /// Whether the peer ended the connection with a reset; known once read() or write() has failed.
    bool wasReset() const { return m_wasReset; }

    std::string& pending() { return m_pending; } ///< bytes read but not used yet

private:
    friend std::unique_ptr<Connection> connectTo(int port);

    /// The system tells of a reset once only, to whichever call comes first.
    void noteFailure();
    bool isAllSent() const;

    std::mutex m_mutex;
    int m_descriptor;
    std::string m_pending;
    bool m_wasReset = false;
};

/// Connects to a port of the loopback address.
std::unique_ptr<Connection> connectTo(int port);

/// Listens on a free port of the loopback address and serves each connection on a thread of its own.
class SocketServer
{
public:
    using Serve = std::function<void(Connection&)>;

    explicit SocketServer(Serve serve);
    ~SocketServer();

    SocketServer(const SocketServer&) = delete;
    SocketServer& operator=(const SocketServer&) = delete;

    int port() const { return m_port; }
    std::string url() const;
    std::size_t connectionCount() const { return m_accepted; }
    /// Takes no more connections, breaks the living ones and waits for their threads.
    void stop();

private:
    struct Session
    {
        explicit Session(int descriptor) : connection(descriptor) {}
        Connection connection;
        std::thread thread;
    };

    void acceptAll();

    Serve m_serve;
    int m_listener = -1;
    int m_port = 0;
    std::atomic<std::size_t> m_accepted{0};
    std::atomic<bool> m_stopping{false};
    std::mutex m_mutex;
    std::list<Session> m_sessions;
    std::thread m_acceptor;
};

} // namespace orlo::test
