#include "WorkPermit.h"

#include <openssl/crypto.h>
#include <pplx/threadpool.h>

#include <chrono>
#include <condition_variable>
#include <exception>
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

struct EndOfProcess
{
    ~EndOfProcess()
    {
        Permits& all = permits();
        std::unique_lock lock(all.mutex);
        all.processEnds = true;
        // Not for this thread's own: a handler of the host's may call exit. Bounded: one that hangs must not hang the exit.
        all.givenBack.wait_for(lock, longestWait, [&] { return all.held == heldByThisThread; });
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
