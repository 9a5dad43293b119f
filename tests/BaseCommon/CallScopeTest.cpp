#include "support/Threads.h"
#include "support/Waiting.h"

#include <BaseCommon/CallScope.h>
#include <BaseCommon/ErrorCode.h>
#include <BaseCommon/Interruption.h>
#include <BaseCommon/ProgressMeter.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using Kind = ProgressMeter::Kind;

void countHere(std::int64_t done, std::int64_t inAll, Kind kind = Kind::ofCall)
{
    Interruption::current()->meter()->count(kind, done, inAll);
}

/// What a scope has told, and when.
class Told
{
public:
    ProgressCallback callback()
    {
        return [this](const Progress& progress) {
            const std::lock_guard lock(m_mutex);
            m_all.push_back(progress);
            m_times.push_back(std::chrono::steady_clock::now());
            m_threads.push_back(std::this_thread::get_id());
        };
    }
    std::size_t count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_all.size();
    }
    Progress last() const
    {
        const std::lock_guard lock(m_mutex);
        return m_all.empty() ? Progress() : m_all.back();
    }
    std::thread::id lastThread() const
    {
        const std::lock_guard lock(m_mutex);
        return m_threads.empty() ? std::thread::id() : m_threads.back();
    }
    std::vector<std::chrono::steady_clock::time_point> times() const
    {
        const std::lock_guard lock(m_mutex);
        return m_times;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Progress> m_all;
    std::vector<std::chrono::steady_clock::time_point> m_times;
    std::vector<std::thread::id> m_threads;
};

TEST(CancelToken, copiesAreTheSameToken)
{
    const CancelToken token;
    const CancelToken copy = token;
    CancelToken other;
    EXPECT_FALSE(copy.isCancelled());
    token.cancel();
    token.cancel();
    EXPECT_TRUE(copy.isCancelled());
    EXPECT_FALSE(other.isCancelled());
    other = copy;
    EXPECT_TRUE(other.isCancelled());
}

TEST(CancelledError, saysSoAndCanBeToldApart)
{
    EXPECT_TRUE(isCancelled(cancelledError()));
    EXPECT_EQ(cancelledError().GetErrorMessage(), L"cancelled");
    EXPECT_EQ(cancelledError().GetValue(), 3892314118);
    EXPECT_FALSE(isCancelled(ErrorCode()));
    EXPECT_FALSE(isCancelled(ErrorCode(error::exception, makeHttpError(L"HttpError", L"cancelled", 5555, 0))));
}

TEST(CallScope, bindsWhatItsThreadBegins)
{
    EXPECT_EQ(Interruption::current(), nullptr);
    const CancelToken token;
    {
        const CallScope scope(token);
        const auto work = Interruption::current();
        ASSERT_NE(work, nullptr);
        EXPECT_FALSE(work->isRequested());
        EXPECT_FALSE(Interruption::isAwaited(work));
        EXPECT_EQ(work->meter(), nullptr);
        std::thread([] { EXPECT_EQ(Interruption::current(), nullptr); }).join();
        token.cancel();
        EXPECT_TRUE(work->isRequested());
        EXPECT_TRUE(work->isCancelled());
    }
    EXPECT_EQ(Interruption::current(), nullptr);
}

TEST(CallScope, ofATokenThatIsCancelledAlreadyIsCancelledFromTheBeginning)
{
    const CancelToken token;
    token.cancel();
    const CallScope scope(token);
    EXPECT_TRUE(Interruption::current()->isRequested());
    EXPECT_TRUE(Interruption::current()->isCancelled());
}

TEST(CallScope, insideAnotherIsCancelledByEitherToken)
{
    for (const bool byOuter : {true, false}) {
        const CancelToken outerToken;
        const CancelToken innerToken;
        const CallScope outer(outerToken);
        const auto outerWork = Interruption::current();
        const CallScope inner(innerToken);
        const auto innerWork = Interruption::current();
        (byOuter ? outerToken : innerToken).cancel();
        EXPECT_TRUE(innerWork->isRequested());
        EXPECT_TRUE(innerWork->isCancelled());
        EXPECT_EQ(outerWork->isCancelled(), byOuter);
    }
}

TEST(CallScope, goesWithTheWorkAroundItButIsNotCancelledByThat)
{
    const auto job = std::make_shared<Interruption>();
    const Interruption::Scope running(job);
    const CancelToken token;
    const CallScope scope(token);
    job->request();
    EXPECT_TRUE(Interruption::current()->isRequested());
    EXPECT_FALSE(Interruption::current()->isCancelled());
    EXPECT_FALSE(token.isCancelled());
    EXPECT_TRUE(Interruption::isAwaited(Interruption::current())) << "as the job waits for it";
}

TEST(CallScope, whatOutlivesItCanStillBeCancelled)
{
    const CancelToken token;
    std::shared_ptr<Interruption> transfer;
    {
        const CallScope scope(token);
        transfer = Interruption::current();
    }
    EXPECT_FALSE(transfer->isRequested());
    token.cancel();
    EXPECT_TRUE(transfer->isCancelled());
}

TEST(CallScope, aTokenForgetsTheScopesThatHaveEnded)
{
    const CancelToken token;
    std::weak_ptr<Interruption> gone;
    {
        const CallScope scope(token);
        gone = Interruption::current();
    }
    EXPECT_TRUE(gone.expired());
    token.cancel();
}

TEST(CallScope, tellsTheLastStateOnItsOwnThreadWhenItEnds)
{
    Told told;
    {
        const CallScope scope(told.callback());
        countHere(0, 100, Kind::ofFile);
        ASSERT_TRUE(waitUntil([&] { return told.count() == 1; }));
        EXPECT_NE(told.lastThread(), std::this_thread::get_id());
        countHere(60, 0, Kind::ofFile);
        countHere(5, 7);
    }
    EXPECT_EQ(told.count(), 2U);
    EXPECT_EQ(told.lastThread(), std::this_thread::get_id());
    EXPECT_EQ(told.last().bytesDone, 65U);
    EXPECT_EQ(told.last().bytesInAll, 107U);
    EXPECT_EQ(told.last().fileBytesDone, 60U);
    EXPECT_EQ(told.last().fileBytesInAll, 100U);
}

TEST(CallScope, withNothingToTellTellsNothing)
{
    Told told;
    {
        const CallScope scope(told.callback());
    }
    EXPECT_EQ(told.count(), 0U);
}

TEST(CallScope, tellsTheLastStateOnce)
{
    Told told;
    {
        const CallScope scope(told.callback());
        countHere(1, 1);
        ASSERT_TRUE(waitUntil([&] { return told.count() == 1; }));
    }
    EXPECT_EQ(told.count(), 1U);
}

TEST(CallScope, tellsTenTimesASecondAtMost)
{
    Told told;
    {
        const CallScope scope(told.callback());
        ASSERT_TRUE(waitUntil([&] {
            countHere(1, 1);
            return told.count() == 4;
        }));
    }
    const auto times = told.times();
    for (std::size_t i = 1; i < 4; ++i) // but the last state, which waits for nothing
        EXPECT_GE((times[i] - times[i - 1]) / 1ms, 99);
}

TEST(CallScope, aHostThatTakesItsTimeHoldsNothingUp)
{
    std::mutex mutex;
    std::condition_variable changed;
    bool isIn = false;
    bool mayGo = false;
    std::atomic<std::uint64_t> last{0};
    {
        const CallScope scope([&](const Progress& progress) {
            std::unique_lock lock(mutex);
            isIn = true;
            changed.notify_all();
            changed.wait(lock, [&] { return mayGo; });
            last = progress.bytesDone;
        });
        countHere(1, 1000);
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, 20s, [&] { return isIn; }));
        for (int i = 0; i < 999; ++i)
            countHere(1, 0);
        EXPECT_EQ(Interruption::current()->meter()->now().bytesDone, 1000U);
        EXPECT_EQ(last, 0U);
        mayGo = true;
        changed.notify_all();
    }
    EXPECT_EQ(last, 1000U);
}

TEST(CallScope, whatTheHostThrowsIsDropped)
{
    std::atomic<int> calls{0};
    {
        const CallScope scope([&](const Progress&) {
            ++calls;
            throw std::runtime_error("host");
        });
        countHere(1, 1);
        ASSERT_TRUE(waitUntil([&] { return calls == 1; }));
        countHere(1, 1);
    }
    EXPECT_EQ(calls, 2);
}

TEST(CallScope, tellsNothingBehindItsEnd)
{
    Told told;
    std::shared_ptr<Interruption> transfer;
    {
        const CallScope scope(told.callback());
        transfer = Interruption::current();
    }
    transfer->meter()->count(Kind::ofFile, 10, 10);
    EXPECT_EQ(told.count(), 0U);
}

TEST(CallScope, insideAnotherTellsBoth)
{
    Told outerTold;
    Told innerTold;
    {
        const CallScope outer(outerTold.callback());
        countHere(1, 2);
        {
            const CallScope inner(innerTold.callback());
            countHere(10, 20);
        }
        {
            const CallScope tokenAlone{CancelToken()};
            countHere(100, 200);
        }
    }
    EXPECT_EQ(outerTold.last().bytesDone, 111U);
    EXPECT_EQ(outerTold.last().bytesInAll, 222U);
    EXPECT_EQ(innerTold.last().bytesDone, 10U);
}

TEST(CallScope, canBeReplacedByAnother)
{
    std::unique_ptr<CallScope> held;
    for (int i = 0; i < 3; ++i) {
        const CancelToken token;
        held = std::make_unique<CallScope>(token); // the new one begins before the old one ends
        token.cancel();
        ASSERT_NE(Interruption::current(), nullptr);
        EXPECT_TRUE(Interruption::current()->isCancelled());
    }
    held.reset();
    EXPECT_EQ(Interruption::current(), nullptr);
}

TEST(CallScope, manyThreadsCancelEachOthersScopes)
{
    constexpr int rounds = 300;
    std::vector<CancelToken> tokens(8);
    std::atomic<int> seen{0};
    inThreads(8, [&](int number) {
        for (int i = 0; i < rounds; ++i) {
            const CancelToken own;
            const CallScope scope(own, [](const Progress&) {});
            const CallScope inner(tokens[static_cast<std::size_t>(number)]);
            countHere(1, 1);
            std::thread other([&] { own.cancel(); });
            if (Interruption::current()->waitFor(20s))
                ++seen;
            other.join();
        }
    });
    EXPECT_EQ(seen, 8 * rounds);
}

TEST(ProgressMeter, takesBackWhatAnAttemptCounted)
{
    ProgressMeter meter;
    meter.count(Kind::ofFile, 40, 100);
    meter.count(Kind::ofFile, -40, -100);
    EXPECT_EQ(meter.now().bytesDone, 0U);
    EXPECT_EQ(meter.now().fileBytesInAll, 0U);
}

} // namespace
} // namespace orlo::test
