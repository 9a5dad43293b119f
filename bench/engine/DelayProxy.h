#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace orlo::bench {

/// A network between the clients and the server: every byte arrives later by the delay, on its way there and on its way back, and a
/// new connection carries nothing before the round trip that its making takes. It doesn't limit the throughput.
class DelayProxy
{
public:
    using Clock = std::chrono::steady_clock;

    explicit DelayProxy(std::chrono::milliseconds delay);
    ~DelayProxy();

    DelayProxy(const DelayProxy&) = delete;
    DelayProxy& operator=(const DelayProxy&) = delete;

    /// Before `start`. Returns: the port that leads to the server's.
    int leadTo(int port);
    void start();

private:
    struct Piece
    {
        Clock::time_point due;
        std::string bytes; ///< empty for the end
    };
    struct Direction
    {
        int from;
        int to;
        std::deque<Piece> pieces;
        Clock::time_point notBefore;
        bool ended = false; ///< nothing more comes
        bool done = false;  ///< nothing more goes
    };
    struct Door
    {
        int listener;
        int port;
    };
    class Connection;

    void run();
    void accept(const Door& door);
    void receive(Direction& direction) const;
    static void deliver(Direction& direction, Clock::time_point now);

    std::chrono::milliseconds m_delay;
    std::vector<Door> m_doors;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::atomic<bool> m_ends{false};
    std::thread m_thread;
};

} // namespace orlo::bench
