#include "BoundedThreads.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <utility>

namespace orlo {

struct BoundedThreads::Ends
{
    std::mutex mutex;
    std::condition_variable changed;
};

BoundedThreads::BoundedThreads() : m_ends(std::make_shared<Ends>())
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
        m_threads.push_back({std::thread([ends = m_ends, hasEnded, body = std::move(body)] {
                                 body();
                                 const std::lock_guard<std::mutex> lock(ends->mutex);
                                 *hasEnded = true;
                                 ends->changed.notify_all();
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
    std::unique_lock<std::mutex> lock(m_ends->mutex);
    return m_ends->changed.wait_until(lock, end, [this] {
        return std::all_of(m_threads.begin(), m_threads.end(), [](const One& one) { return *one.hasEnded || one.isOwn(); });
    });
}

bool BoundedThreads::endBy(Clock::time_point end)
{
    awaitBy(end);
    std::vector<One> threads = std::exchange(m_threads, {});
    std::unique_lock<std::mutex> lock(m_ends->mutex);
    bool haveAllEnded = true;
    std::vector<std::thread> ended;
    for (One& one : threads) {
        haveAllEnded = haveAllEnded && *one.hasEnded;
        if (*one.hasEnded)
            ended.push_back(std::move(one.thread));
        else
            one.thread.detach();
    }
    lock.unlock();
    for (std::thread& thread : ended)
        thread.join();
    return haveAllEnded;
}

} // namespace orlo
