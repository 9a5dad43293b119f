#include "Loop.h"

#include "Workers.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

struct Letter
{
    enum class Kind { carry, goOn, cancel } kind;
    std::shared_ptr<Transfer> transfer;
};

/// What the thread has in hand.
class Carried
{
public:
    using Wake = std::function<void()>;

    explicit Carried(CURLM* multi) : m_multi(multi) {}
    ~Carried() { cancelAll(); }
    Carried(const Carried&) = delete;
    Carried& operator=(const Carried&) = delete;

    bool isEmpty() const { return m_all.empty(); }

    void begin(const std::shared_ptr<Transfer>& transfer, Wake wake, const Wake& cancel)
    {
        try {
            Entry entry;
            entry.easy = m_spare ? std::exchange(m_spare, nullptr) : curl::makeEasy();
            CURL* const easy = entry.easy.get();
            transfer->attach(easy, std::move(wake));
            curl::require(curl_multi_add_handle(m_multi, easy));
            entry.transfer = transfer;
            m_handles[transfer.get()] = easy;
            m_all.emplace(easy, std::move(entry));
        }
        catch (...) {
            return transfer->endWith(std::current_exception());
        }
        if (transfer->token().is_cancelable())
            m_all.at(m_handles.at(transfer.get())).registration = transfer->token().register_callback(cancel);
    }

    void goOn(const Transfer& transfer)
    {
        if (m_handles.count(&transfer) > 0)
            m_all.at(m_handles.at(&transfer)).transfer->goOn();
    }

    void cancel(const Transfer& transfer)
    {
        if (const auto handle = m_handles.find(&transfer); handle != m_handles.end())
            drop(handle->second)->endWith(cancelled());
    }

    void cancelAll()
    {
        while (!m_all.empty())
            drop(m_all.begin()->first)->endWith(cancelled());
    }

    void step()
    {
        int running = 0;
        curl_multi_perform(m_multi, &running);
        for (auto ended = curl::endedOn(m_multi); ended.code; ended = curl::endedOn(m_multi)) {
            // The handle tells more of its failure while it is attached.
            const std::shared_ptr<Transfer> transfer = m_all.at(ended.easy).transfer;
            transfer->end(*ended.code);
            drop(ended.easy, *ended.code == CURLE_OK);
        }
        endOverdue();
    }

    Transfer::Clock::time_point due() const
    {
        auto first = Transfer::Clock::time_point::max();
        for (const auto& [easy, entry] : m_all)
            first = std::min(first, entry.transfer->due());
        return first;
    }

private:
    struct Entry
    {
        std::shared_ptr<Transfer> transfer;
        curl::Easy easy;
        pplx::cancellation_token_registration registration;
    };

    void endOverdue()
    {
        const auto now = Transfer::Clock::now();
        std::vector<CURL*> overdue;
        for (const auto& [easy, entry] : m_all) {
            if (entry.transfer->due() <= now)
                overdue.push_back(easy);
        }
        for (CURL* const easy : overdue) {
            const std::shared_ptr<Transfer> transfer = m_all.at(easy).transfer;
            transfer->endTooLate();
            drop(easy);
        }
    }

    /// canBeUsedAgain: see Ending.
    std::shared_ptr<Transfer> drop(CURL* easy, bool canBeUsedAgain = false)
    {
        auto node = m_all.extract(easy);
        Entry entry = std::move(node.mapped());
        curl_multi_remove_handle(m_multi, easy);
        m_handles.erase(entry.transfer.get());
        if (entry.transfer->token().is_cancelable())
            entry.transfer->token().deregister_callback(entry.registration); // it waits for one that runs, which takes no lock for long
        if (canBeUsedAgain) {
            curl_easy_reset(easy);
            m_spare = std::move(entry.easy);
        }
        return entry.transfer;
    }

    CURLM* m_multi;
    std::unordered_map<CURL*, Entry> m_all;
    std::unordered_map<const Transfer*, CURL*> m_handles;
    curl::Easy m_spare; ///< for the next one
};

} // namespace

struct Loop::State : std::enable_shared_from_this<State>
{
    void post(Letter::Kind kind, const std::shared_ptr<Transfer>& transfer);
    void run();
    void serve(std::unique_lock<std::mutex>& lock);
    void deliver(const Letter& letter, Carried& carried);

    std::mutex mutex;
    std::condition_variable gone;
    std::vector<Letter> letters;
    CURLM* multi = nullptr; ///< of the thread that serves; null: none does
    unsigned threads = 0;
    bool hasEnded = false;
};

Loop::Loop() : m_state(std::make_shared<State>())
{}

Loop& Loop::instance()
{
    static Loop& loop = utils::neverDestroyed(new Loop);
    return loop;
}

void Loop::carry(const std::shared_ptr<Transfer>& transfer)
{
    State& state = *m_state;
    const std::lock_guard lock(state.mutex);
    if (state.hasEnded)
        throw std::runtime_error("the process ends");
    state.letters.push_back({Letter::Kind::carry, transfer});
    if (state.multi) {
        curl_multi_wakeup(state.multi);
        return;
    }
    try {
        curl::Multi multi = curl::makeMulti();
        std::thread([kept = m_state] { kept->run(); }).detach();
        state.multi = multi.release(); // the thread's from here on
        ++state.threads;
    }
    catch (...) {
        state.letters.pop_back();
        throw;
    }
}

void Loop::endBy(Transfer::Clock::time_point end)
{
    State& state = *m_state;
    std::unique_lock lock(state.mutex);
    state.hasEnded = true;
    if (state.multi)
        curl_multi_wakeup(state.multi);
    state.gone.wait_until(lock, end, [&] { return state.threads == 0; });
}

/// Letters to a thread that has gone are about nothing that is still carried.
void Loop::State::post(Letter::Kind kind, const std::shared_ptr<Transfer>& transfer)
{
    const std::lock_guard lock(mutex);
    if (!multi)
        return;
    letters.push_back({kind, transfer});
    curl_multi_wakeup(multi);
}

void Loop::State::deliver(const Letter& letter, Carried& carried)
{
    const auto poster = [this, about = std::weak_ptr(letter.transfer)](Letter::Kind kind) {
        return [state = weak_from_this(), about, kind] {
            const auto to = state.lock();
            const auto transfer = about.lock();
            if (to && transfer)
                to->post(kind, transfer);
        };
    };
    switch (letter.kind) {
    case Letter::Kind::carry:
        return carried.begin(letter.transfer, poster(Letter::Kind::goOn), poster(Letter::Kind::cancel));
    case Letter::Kind::goOn:
        return carried.goOn(*letter.transfer);
    case Letter::Kind::cancel:
        return carried.cancel(*letter.transfer);
    }
}

void Loop::State::serve(std::unique_lock<std::mutex>& lock)
{
    Carried carried(multi);
    auto idleSince = Transfer::Clock::now();
    while (!hasEnded && (!letters.empty() || !carried.isEmpty() || Transfer::Clock::now() < idleSince + idleTime)) {
        const std::vector<Letter> taken = std::exchange(letters, {});
        lock.unlock();
        for (const Letter& letter : taken)
            deliver(letter, carried);
        carried.step();
        if (!carried.isEmpty())
            idleSince = Transfer::Clock::now();
        curl::waitUntil(multi, std::min(carried.due(), idleSince + idleTime));
        lock.lock();
    }
    if (carried.isEmpty())
        return;
    lock.unlock();
    carried.cancelAll();
    lock.lock();
}

void Loop::State::run()
{
    std::unique_lock lock(mutex);
    curl::Multi own(multi);
    serve(lock);
    multi = nullptr; // nobody wakes it any more
    const std::vector<Letter> left = std::exchange(letters, {});
    lock.unlock();
    for (const Letter& letter : left) {
        if (letter.kind == Letter::Kind::carry)
            letter.transfer->endWith(cancelled());
    }
    own.reset();
    utils::forgetOpenSslOfThread();
    lock.lock();
    --threads;
    gone.notify_all();
}

} // namespace orlo::http
