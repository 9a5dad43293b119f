#include "WorkPermit.h"

#include "../Engine/Curl.h"
#include "../Engine/FileThreads.h"
#include "../Engine/Loop.h"
#include "../Engine/Workers.h"

#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/ProcessEnd.h>

#include <openssl/crypto.h>
#include <pplx/pplxtasks.h>
#include <pplx/threadpool.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

constexpr std::chrono::seconds longestWait{10};

enum class Phase { open, ending, over };

struct Permits
{
    std::mutex mutex;
    std::condition_variable givenBack;
    Phase phase = Phase::open;
    unsigned pieces = 0;
    /// One for each operation.
    std::vector<std::shared_ptr<Interruption>> operations;
};

Permits& permits()
{
    static Permits& instance = utils::neverDestroyed(new Permits);
    return instance;
}

thread_local unsigned piecesOfThisThread = 0;
thread_local unsigned operationsOfThisThread = 0;

/// cpprestsdk makes its pool with the first client, and gives it forty threads, of which the library uses none. A host that wants them says
/// so before its first call.
void makePool()
{
    constexpr int threads = 2;
    try {
        crossplat::threadpool::initialize_with_threads(threads);
    }
    catch (const std::exception&) { // the host has made it
        crossplat::threadpool::shared_instance();
    }
    pplx::get_ambient_scheduler(); // before there is a second thread that could want it
}

void quietly(const std::function<void()>& work) noexcept
{
    try {
        work();
    }
    catch (const std::exception&) { // no memory for it; the process ends less tidily then
    }
}

void breakOffCalls()
{
    std::vector<std::shared_ptr<Interruption>> operations;
    {
        Permits& all = permits();
        const std::lock_guard lock(all.mutex);
        all.phase = Phase::ending;
        quietly([&] { operations = all.operations; });
    }
    // Without the lock: what is broken off may come back at once.
    for (const auto& operation : operations)
        quietly([&] { operation->request(); });
}

/// First those that wait for others, then the others. Not for this thread's own: a handler of the host's may call exit. Bounded: one that
/// hangs must not hang the exit.
void awaitCalls()
{
    Permits& all = permits();
    const auto end = std::chrono::steady_clock::now() + longestWait;
    {
        std::unique_lock lock(all.mutex);
        all.givenBack.wait_until(lock, end, [&] { return all.operations.size() == operationsOfThisThread; });
        all.phase = Phase::over;
        all.givenBack.wait_until(lock, end, [&] { return all.pieces == piecesOfThisThread; });
    }
    // What nobody waits for is dropped: its requests are cancelled, and its workers do nothing without a permit.
    Loop::instance().endBy(end);
    FileThreads::instance().endBy(end);
    Workers::instance().endBy(end);
}

/// What the work uses is made first, so that it goes last: OpenSSL, and cpprestsdk's pool, whose threads use OpenSSL. Nothing of that is
/// made any more while the process ends, as it would go at once.
bool makeWhatIsUsed()
{
    ProcessEnd::at(ProcessEnd::Step::breakOffCalls, &breakOffCalls);
    ProcessEnd::at(ProcessEnd::Step::awaitCalls, &awaitCalls);
    if (ProcessEnd::hasBegun())
        return false;
    utils::keepOpenSsl();
    OPENSSL_init_crypto(OPENSSL_INIT_LOAD_CRYPTO_STRINGS, nullptr); // it does nothing for nothing
    quietly([] { curl::makeReady(); });
    quietly(&makePool);
    return true;
}

void watchEndOfProcess()
{
    static const bool isMade = makeWhatIsUsed();
    static const ProcessEnd::Watch watch{};
    static_cast<void>(isMade);
}

} // namespace

WorkPermit::WorkPermit(bool isAwaited)
{
    watchEndOfProcess();
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    m_given = all.phase == Phase::open || piecesOfThisThread + operationsOfThisThread > 0 || (isAwaited && all.phase == Phase::ending);
    if (!m_given)
        return;
    ++all.pieces;
    ++piecesOfThisThread;
}

WorkPermit::~WorkPermit()
{
    if (!m_given)
        return;
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    --piecesOfThisThread;
    --all.pieces;
    all.givenBack.notify_all();
}

bool WorkPermit::doesProcessEnd()
{
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    return all.phase != Phase::open;
}

OperationPermit::OperationPermit(std::shared_ptr<Interruption> interruption) : m_interruption(std::move(interruption))
{
    watchEndOfProcess();
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    m_given = all.phase == Phase::open;
    if (!m_given)
        return;
    all.operations.push_back(m_interruption);
    ++operationsOfThisThread;
}

OperationPermit::~OperationPermit()
{
    if (!m_given)
        return;
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    all.operations.erase(std::find(all.operations.begin(), all.operations.end(), m_interruption));
    --operationsOfThisThread;
    all.givenBack.notify_all();
}

} // namespace orlo::http
