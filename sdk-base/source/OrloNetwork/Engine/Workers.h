#pragma once

#include <OrloNetwork/Export.h>

#include <pplx/pplxtasks.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orlo::http {

/// How long a thread of the engine stays without work.
constexpr std::chrono::milliseconds idleTime{500};

/// Threads for all that may block: the continuations of requests, a host's handlers among them, and the reading and writing of files, so
/// that none of it holds up the loop that carries the bytes. There are four while there is much to do, none half a second after there is
/// nothing. A piece that is held up for 20 ms leaves its place to another one on a further thread, so that a handler that waits for
/// another transfer never waits for a thread; 256 at the most.   Threads: any.
class ORLO_NETWORK_API Workers
{
public:
    /// Never destroyed: a thread may outlive the statics when the process ends.
    static Workers& instance();

    /// Work that throws loses its exception. Where the system has no thread to give and none is there, the work is done at once, and so
    /// it is when the threads have been ended.
    void run(std::function<void()> work);
    /// The same for tasks and their continuations.
    static pplx::scheduler_ptr scheduler();
    /// For continuations that wait for nothing: they run on the thread that ends their task.
    static pplx::scheduler_ptr atOnce();

    /// Keeps back what this thread hands to the scheduler, to do it itself.
    class ORLO_NETWORK_API Gathering
    {
    public:
        Gathering() = default;
        ~Gathering();
        Gathering(const Gathering&) = delete;
        Gathering& operator=(const Gathering&) = delete;

        void begin();
        void add(std::function<void()> work);
        /// Does all of it, and gathers no more.
        void run();

    private:
        std::vector<std::function<void()>> m_gathered;
    };

    /// For the end of the process: waits until nothing is left to do and no thread is there, but the caller's own.
    void endBy(std::chrono::steady_clock::time_point end);

private:
    Workers();

    struct State;
    const std::unique_ptr<State> m_state;
};

} // namespace orlo::http
