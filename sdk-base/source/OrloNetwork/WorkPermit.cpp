#include "WorkPermit.h"

#include <BaseCommon/Platform.h>
#include <BaseCommon/ProcessEnd.h>

#include <openssl/crypto.h>
#include <pplx/pplx.h>
#include <pplx/threadpool.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <future>
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

// Never destroyed: they are asked for until the process is gone.
Permits& permits()
{
    static Permits& instance = *new Permits;
    return instance;
}

std::atomic<bool> isPoolMade{false};

thread_local unsigned piecesOfThisThread = 0;
thread_local unsigned operationsOfThisThread = 0;

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
    if (isPoolMade)
        quietly(&letPoolRunDry);
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
    try {
        crossplat::threadpool::shared_instance();
        isPoolMade = true;
    }
    catch (const std::exception&) { // no thread to be had; the work itself will say so
    }
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

void WorkBaton::take()
{
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    all.pieces += m_taken ? 0 : 1;
    m_taken = true;
}

void WorkBaton::drop()
{
    Permits& all = permits();
    const std::lock_guard lock(all.mutex);
    all.pieces -= m_taken ? 1 : 0;
    m_taken = false;
    all.givenBack.notify_all();
}

} // namespace orlo::http
