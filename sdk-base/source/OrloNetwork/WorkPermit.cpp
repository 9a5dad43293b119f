#include "WorkPermit.h"

#include "CallInProgress.h"

#include <openssl/crypto.h>
#include <pplx/pplx.h>
#include <pplx/threadpool.h>

#include <chrono>
#include <condition_variable>
#include <exception>
#include <future>
#include <memory>
#include <mutex>

namespace orlo::http {

namespace {

constexpr std::chrono::seconds longestWait{10};

struct Permits
{
    std::mutex mutex;
    std::condition_variable givenBack;
    unsigned held = 0;
    bool processEnds = false;
};

// Never destroyed: they are asked for until the process is gone.
Permits& permits()
{
    static Permits& instance = *new Permits;
    return instance;
}

thread_local unsigned heldByThisThread = 0;

using Turn = std::shared_ptr<std::promise<void>>;

void endTurn(void* turn)
{
    const std::unique_ptr<Turn> owner(static_cast<Turn*>(turn));
    (*owner)->set_value();
}

/// What cpprestsdk has queued for itself goes unrun when its pool goes, with all that it holds; so its queue gets a few turns first. Each
/// turn ends behind what was queued before it.
void letPoolRunDry()
{
    for (int i = 0; i < 4; ++i) {
        const Turn turn = std::make_shared<std::promise<void>>();
        auto owner = std::make_unique<Turn>(turn);
        pplx::get_ambient_scheduler()->schedule(&endTurn, owner.get());
        static_cast<void>(owner.release()); // the queue has it
        if (turn->get_future().wait_for(std::chrono::milliseconds(50)) != std::future_status::ready)
            return; // its threads are busy with something else
    }
}

struct EndOfProcess
{
    ~EndOfProcess()
    {
        Permits& all = permits();
        std::unique_lock lock(all.mutex);
        all.processEnds = true;
        lock.unlock();
        quietly(&CallInProgress::cancelAll);
        lock.lock();
        // Not for this thread's own: a handler of the host's may call exit. Bounded: one that hangs must not hang the exit.
        all.givenBack.wait_for(lock, longestWait, [&] { return all.held == heldByThisThread; });
        lock.unlock();
        quietly(&letPoolRunDry);
    }

    static void quietly(void (*work)())
    {
        try {
            work();
        }
        catch (const std::exception&) { // no memory for it; the process ends less tidily then
        }
    }
};

/// What the work uses is made first, so that it goes last: OpenSSL, and cpprestsdk's pool, whose threads use OpenSSL.
bool makeWhatIsUsed()
{
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr); // it does nothing for nothing
    try {
        crossplat::threadpool::shared_instance();
    }
    catch (const std::exception&) { // no thread to be had; the work itself will say so
    }
    return true;
}

void watchEndOfProcess()
{
    static const bool isMade = makeWhatIsUsed();
    static const EndOfProcess watch;
    static_cast<void>(isMade);
}

} // namespace

WorkPermit::WorkPermit()
{
    watchEndOfProcess();
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    m_given = !all.processEnds || heldByThisThread > 0;
    if (!m_given)
        return;
    ++all.held;
    ++heldByThisThread;
}

void WorkBaton::take()
{
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    all.held += m_taken ? 0 : 1;
    m_taken = true;
}

void WorkBaton::drop()
{
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    all.held -= m_taken ? 1 : 0;
    m_taken = false;
    all.givenBack.notify_all();
}

WorkPermit::~WorkPermit()
{
    if (!m_given)
        return;
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    --heldByThisThread;
    --all.held;
    all.givenBack.notify_all();
}

} // namespace orlo::http
