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
    friend std::unique_ptr<Connection> beginToConnect(int port);

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
/// The same without waiting until it is connected.
std::unique_ptr<Connection> beginToConnect(int port);

/// Listens on a free port of the loopback address, for one who takes the connections himself.
class Listener
{
public:
    enum class Version { four, six }; ///< of the internet protocol

    /// queue: how many connections may wait to be taken.
    explicit Listener(int queue = 128, Version version = Version::four);
    ~Listener();

    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// Whether the machine has the protocol.
    bool isThere() const { return m_port != 0; }
    int port() const { return m_port; }
    /// As in an address: "127.0.0.1:<port>".
    std::string place() const;
    std::string url() const { return "http://" + place(); }

    /// Waits for a connection.   Returns: null once it has been interrupted. Any number of threads may wait.
    std::unique_ptr<Connection> accept();
    /// Wakes all who wait, for good.
    void interrupt();
    /// Gives the port back, when nobody waits any more.
    void close();

private:
    int m_descriptor = -1;
    int m_port = 0;
    Version m_version;
};

/// Listens on a free port of the loopback address and serves each connection on a thread of its own.
class SocketServer
{
public:
    using Serve = std::function<void(Connection&)>;

    explicit SocketServer(Serve serve);
    ~SocketServer();

    SocketServer(const SocketServer&) = delete;
    SocketServer& operator=(const SocketServer&) = delete;

    int port() const { return m_listener.port(); }
    std::string url() const { return m_listener.url(); }
    std::size_t connectionCount() const { return m_accepted; }
    /// Takes no more connections, breaks the living ones and waits for their threads.
    void stop();

private:
    struct Session
    {
        std::unique_ptr<Connection> connection;
        std::thread thread;
    };

    void acceptAll();

    Serve m_serve;
    Listener m_listener;
    std::atomic<std::size_t> m_accepted{0};
    std::atomic<bool> m_isStopped{false};
    std::mutex m_mutex;
    std::list<Session> m_sessions;
    std::thread m_acceptor;
};

} // namespace orlo::test
