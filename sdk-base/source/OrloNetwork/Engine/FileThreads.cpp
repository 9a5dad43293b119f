#include "FileThreads.h"

#include "Here.h"
#include "Workers.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

constexpr unsigned most = 6;

/// What the thread goes on with: the transfer that a continuation of the last one started.
struct Next
{
    std::shared_ptr<Transfer> transfer;
};

thread_local Next* nextOfThisThread = nullptr; ///< null where no continuation runs

/// Lets what the continuations start come to this thread.
class TakesNext
{
public:
    explicit TakesNext(Next& next) { nextOfThisThread = &next; }
    ~TakesNext() { nextOfThisThread = nullptr; }
    TakesNext(const TakesNext&) = delete;
    TakesNext& operator=(const TakesNext&) = delete;
};

thread_local unsigned depthOfThisThread = 0;

} // namespace

struct FileThreads::State
{
    void work(std::shared_ptr<Transfer> transfer);
    std::shared_ptr<Transfer> awaitTransfer();

    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::shared_ptr<Transfer>> queue; ///< no longer than there are idle threads
    std::set<CURLM*> multis;                      ///< to be woken
    unsigned threads = 0;
    unsigned idle = 0;
    std::atomic<bool> hasEnded{false};
};

/// One thread's own.
class FileThreads::Thread
{
public:
    explicit Thread(State& state) : m_state(state) { ++depthOfThisThread; }
    ~Thread() { drop(); }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Carries the transfer and runs its continuations.   Returns: what one of them started here.
    std::shared_ptr<Transfer> carry(const std::shared_ptr<Transfer>& transfer)
    {
        Workers::Gathering continuations;
        try {
            if (!m_carrier)
                make();
            const Ending ending = carryOn(transfer, *m_carrier, m_state.hasEnded);
            continuations.begin();
            ending.tell();
            if (ending.canBeUsedAgain)
                curl_easy_reset(m_carrier->easy.get());
            else
                drop();
        }
        catch (...) {
            drop(); // what is the matter with it nobody knows
            continuations.begin();
            transfer->endWith(std::current_exception());
        }
        Next next;
        const TakesNext takes(next);
        continuations.run();
        return next.transfer;
    }

private:
    void make()
    {
        auto carrier = std::make_unique<Carrier>();
        const std::lock_guard lock(m_state.mutex);
        m_state.multis.insert(carrier->multi.get());
        m_carrier = std::move(carrier);
    }

    void drop()
    {
        if (!m_carrier)
            return;
        {
            const std::lock_guard lock(m_state.mutex);
            m_state.multis.erase(m_carrier->multi.get());
        }
        m_carrier.reset();
    }

    State& m_state;
    std::unique_ptr<Carrier> m_carrier; ///< with the connection that is kept
};

FileThreads::FileThreads() : m_state(std::make_unique<State>())
{}

FileThreads& FileThreads::instance()
{
    static FileThreads& threads = utils::neverDestroyed(new FileThreads);
    return threads;
}

bool FileThreads::carry(const std::shared_ptr<Transfer>& transfer)
{
    if (nextOfThisThread && !nextOfThisThread->transfer) {
        nextOfThisThread->transfer = transfer;
        return true;
    }
    State& state = *m_state;
    const std::lock_guard lock(state.mutex);
    if (state.hasEnded)
        return false;
    if (state.queue.size() < state.idle) {
        state.queue.push_back(transfer);
        state.changed.notify_one();
        return true;
    }
    if (state.threads == most)
        return false;
    try {
        // What the thread was made with would live as long as it, and longer than the end of the process waits.
        std::thread([&state, first = transfer]() mutable { state.work(std::move(first)); }).detach();
    }
    catch (const std::system_error&) { // none to be had
        return false;
    }
    ++state.threads;
    return true;
}

std::shared_ptr<Transfer> FileThreads::State::awaitTransfer()
{
    std::unique_lock lock(mutex);
    ++idle;
    changed.wait_for(lock, idleTime, [&] { return !queue.empty() || hasEnded; });
    --idle;
    if (queue.empty())
        return nullptr;
    auto transfer = std::move(queue.back());
    queue.pop_back();
    return transfer;
}

void FileThreads::State::work(std::shared_ptr<Transfer> transfer)
{
    {
        Thread own(*this);
        while (transfer) {
            transfer = own.carry(transfer);
            if (!transfer)
                transfer = awaitTransfer();
        }
    }
    utils::forgetOpenSslOfThread();
    const std::lock_guard lock(mutex);
    --threads;
    changed.notify_all();
}

void FileThreads::endBy(Transfer::Clock::time_point end)
{
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    const unsigned own = depthOfThisThread;
    state.hasEnded = true;
    for (CURLM* const multi : state.multis)
        curl_multi_wakeup(multi);
    state.changed.notify_all();
    state.changed.wait_until(lock, end, [&] { return state.threads <= own; });
}

} // namespace orlo::http
