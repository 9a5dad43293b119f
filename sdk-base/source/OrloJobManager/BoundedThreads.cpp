#include "BoundedThreads.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace orlo {

struct BoundedThreads::Signal
{
    std::mutex mutex;
    std::condition_variable changed;
};

BoundedThreads::BoundedThreads() : m_signal(std::make_shared<Signal>())
{}

BoundedThreads::~BoundedThreads()
{
    endBy(Clock::now());
}

bool BoundedThreads::start(std::function<void()> body)
{
    auto hasEnded = std::make_shared<bool>(false);
    try {
        m_threads.reserve(m_threads.size() + 1);
        m_threads.push_back({std::thread([signal = m_signal, hasEnded, body = std::move(body)] {
                                 body();
                                 const std::lock_guard lock(signal->mutex);
                                 *hasEnded = true;
                                 signal->changed.notify_all();
                             }),
                             hasEnded});
        return true;
    }
    catch (const std::exception&) {
        return false;
    }
}

bool BoundedThreads::awaitBy(Clock::time_point end) const
{
    std::unique_lock lock(m_signal->mutex);
    return m_signal->changed.wait_until(lock, end, [this] {
        return std::all_of(m_threads.begin(), m_threads.end(), [](const Thread& thread) { return *thread.hasEnded || thread.isOwn(); });
    });
}

bool BoundedThreads::endBy(Clock::time_point end)
{
    awaitBy(end);
    std::vector<Thread> threads = std::exchange(m_threads, {});
    std::unique_lock lock(m_signal->mutex);
    bool haveAllEnded = true;
    std::vector<std::thread> ended;
    for (Thread& started : threads) {
        haveAllEnded = haveAllEnded && *started.hasEnded;
        if (*started.hasEnded)
            ended.push_back(std::move(started.thread));
        else
            started.thread.detach();
    }
    lock.unlock();
    for (std::thread& thread : ended)
        thread.join();
    return haveAllEnded;
}

} // namespace orlo
