#include "Workers.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t usual = 4;
constexpr std::size_t most = 256;
constexpr std::chrono::milliseconds patience{20};

thread_local unsigned depthOfThisThread = 0;

void runQuietly(const std::function<void()>& work) noexcept
{
    try {
        work();
    }
    catch (...) { // it told its caller what it had to tell
    }
}

thread_local Workers::Gathering* gatheringOfThisThread = nullptr;

class Scheduler final : public pplx::scheduler_interface
{
public:
    void schedule(pplx::TaskProc_t procedure, void* parameter) override
    {
        auto work = [procedure, parameter] { procedure(parameter); };
        if (gatheringOfThisThread)
            gatheringOfThisThread->add(std::move(work));
        else
            Workers::instance().run(std::move(work));
    }
};

class AtOnce final : public pplx::scheduler_interface
{
public:
    void schedule(pplx::TaskProc_t procedure, void* parameter) override { procedure(parameter); }
};

} // namespace

struct Workers::State
{
    State() { running.reserve(most); }

    void start();
    void work();
    /// Returns: false when there is nothing more to do for this thread.
    bool awaitWork(std::unique_lock<std::mutex>& lock);
    /// A piece that runs longer than the patience lasts is held up, and leaves its place to another one.
    Clock::time_point nextPlace() const;

    std::mutex mutex;
    std::condition_variable changed;
    std::condition_variable gone;
    std::deque<std::function<void()>> queue;
    std::size_t threads = 0;
    std::vector<Clock::time_point> running; ///< when each piece began, the first one first; there is room for all
    bool hasEnded = false;
};

Workers::Workers() : m_state(std::make_unique<State>())
{}

Workers& Workers::instance()
{
    static Workers& workers = utils::neverDestroyed(new Workers);
    return workers;
}

pplx::scheduler_ptr Workers::scheduler()
{
    static Scheduler& scheduler = utils::neverDestroyed(new Scheduler);
    return pplx::scheduler_ptr(&scheduler);
}

pplx::scheduler_ptr Workers::atOnce()
{
    static AtOnce& scheduler = utils::neverDestroyed(new AtOnce);
    return pplx::scheduler_ptr(&scheduler);
}

Workers::Gathering::~Gathering()
{
    run();
}

void Workers::Gathering::begin()
{
    gatheringOfThisThread = this;
}

void Workers::Gathering::add(std::function<void()> work)
{
    m_gathered.push_back(std::move(work));
}

void Workers::Gathering::run()
{
    if (gatheringOfThisThread == this)
        gatheringOfThisThread = nullptr;
    for (const auto& work : std::exchange(m_gathered, {}))
        runQuietly(work);
}

void Workers::run(std::function<void()> work)
{
    State& state = *m_state;
    {
        const std::lock_guard lock(state.mutex);
        if (!state.hasEnded) {
            state.queue.push_back(std::move(work));
            if (state.threads == state.running.size() && state.threads < most)
                state.start();
            if (state.threads > 0) {
                state.changed.notify_all();
                return;
            }
            work = std::move(state.queue.back());
            state.queue.pop_back();
        }
    }
    runQuietly(work);
}

void Workers::State::start()
{
    try {
        std::thread([this] { work(); }).detach();
        ++threads;
    }
    catch (const std::system_error&) { // none to be had: those that are there do the work
    }
}

Clock::time_point Workers::State::nextPlace() const
{
    return running.size() < usual ? Clock::time_point::min() : running[running.size() - usual] + patience;
}

bool Workers::State::awaitWork(std::unique_lock<std::mutex>& lock)
{
    while (true) {
        if (!changed.wait_for(lock, idleTime, [&] { return !queue.empty() || hasEnded; }) || queue.empty())
            return false;
        const auto place = nextPlace();
        if (place <= Clock::now())
            return true;
        changed.wait_until(lock, place, [&] { return queue.empty() || nextPlace() < place; });
    }
}

void Workers::State::work()
{
    ++depthOfThisThread;
    std::unique_lock lock(mutex);
    while (awaitWork(lock)) {
        std::function<void()> next = std::move(queue.front());
        queue.pop_front();
        const auto begin = Clock::now();
        running.push_back(begin);
        if (!queue.empty() && threads == running.size() && threads < most)
            start();
        lock.unlock();
        runQuietly(next);
        next = nullptr; // what it held goes before the lock is taken again
        lock.lock();
        running.erase(std::find(running.begin(), running.end(), begin));
        changed.notify_all();
    }
    utils::forgetOpenSslOfThread();
    --threads;
    gone.notify_all();
}

void Workers::endBy(std::chrono::steady_clock::time_point end)
{
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    const unsigned own = depthOfThisThread;
    state.hasEnded = true;
    state.changed.notify_all();
    state.gone.wait_until(lock, end, [&] { return state.threads <= own; });
}

} // namespace orlo::http
