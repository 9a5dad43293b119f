#pragma once

#include "Connection.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace orlo::platform {

/// Accepts connections on the loopback interface and hands those with a request waiting to a fixed number of threads. An idle connection
/// holds no thread, so that clients which keep connections alive can't starve the others.
class Listener
{
public:
    /// Serves one request; false if the connection is done with.
    using Serve = std::function<bool(Connection&)>;

    explicit Listener(Serve serve);
    ~Listener();

    /// port 0: a free one. Returns the port. Throws if it can't listen.
    int open(int port);
    /// Ends all connections and joins all threads.
    void close();

private:
    using ConnectionPtr = std::unique_ptr<Connection>;
    using TimePoint = std::chrono::steady_clock::time_point;
    struct Idle
    {
        ConnectionPtr connection;
        TimePoint since;
    };

    void watch();
    void acceptOne();
    void dispatch(ConnectionPtr connection);
    void dropStale(TimePoint now);
    std::vector<Idle> takeReturned();
    void work();
    void serve(ConnectionPtr connection);
    ConnectionPtr nextReady();
    void giveBack(ConnectionPtr connection);
    void retire(ConnectionPtr connection);
    void wake() const;

    Serve m_serve;
    int m_listening = -1;
    int m_wake = -1;
    std::vector<std::thread> m_threads;
    std::vector<Idle> m_idle; ///< Touched by the watching thread only.

    std::mutex m_mutex;
    std::condition_variable m_readyChanged;
    bool m_stopping = false;
    std::deque<ConnectionPtr> m_ready;
    std::vector<Idle> m_returned;
    std::set<int> m_beingServed; ///< Sockets; shut down at close, so that no thread waits for its client.
};

} // namespace orlo::platform
