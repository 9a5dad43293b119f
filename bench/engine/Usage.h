#pragma once

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

namespace orlo::bench {

/// A number of /proc/self/status; 0 for one that isn't there.
inline long statusNumber(const std::string& field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, field.size() + 1, field + ":") == 0)
            return std::stol(line.substr(field.size() + 1));
    }
    return 0;
}

/// Looks how many threads there are for as long as it lives, its own one left out. It costs time itself.
class ThreadWatch
{
public:
    ThreadWatch()
    {
        m_thread = std::thread([this] {
            for (; !m_ends; std::this_thread::sleep_for(std::chrono::milliseconds(1)))
                look();
        });
    }
    ~ThreadWatch() { end(); }

    ThreadWatch(const ThreadWatch&) = delete;
    ThreadWatch& operator=(const ThreadWatch&) = delete;

    long most()
    {
        end();
        return m_most;
    }

private:
    void look()
    {
        const long now = statusNumber("Threads") - 1;
        if (now > m_most)
            m_most = now;
    }
    void end()
    {
        m_ends = true;
        if (m_thread.joinable())
            m_thread.join();
    }

    std::atomic<bool> m_ends{false};
    std::atomic<long> m_most{0};
    std::thread m_thread;
};

/// What a worker says at its end: seconds of the work alone, peak of memory in KiB, threads at most and threads once idle; the
/// threads are 0 where nobody looked.
inline void report(double seconds, long peak, long threads, long idleThreads)
{
    std::printf("%.6f %ld %ld %ld\n", seconds, peak, threads, idleThreads);
}

} // namespace orlo::bench
