#include "support/Waiting.h"

#include <BaseCommon/Interruption.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace orlo::test {
namespace {

using std::chrono::milliseconds;

TEST(Interruption, tellsAllWhoListenOnce)
{
    const auto interruption = std::make_shared<Interruption>();
    int first = 0;
    int second = 0;
    const Interruption::Listener one(interruption, [&] { ++first; });
    const Interruption::Listener other(interruption, [&] { ++second; });
    EXPECT_FALSE(interruption->isRequested());
    interruption->request();
    interruption->request();
    EXPECT_TRUE(interruption->isRequested());
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(Interruption, tellsALateListenerAtOnce)
{
    const auto interruption = std::make_shared<Interruption>();
    interruption->request();
    bool isTold = false;
    const Interruption::Listener late(interruption, [&] { isTold = true; });
    EXPECT_TRUE(isTold);
}

TEST(Interruption, tellsNobodyWhoHasGone)
{
    const auto interruption = std::make_shared<Interruption>();
    bool isTold = false;
    {
        const Interruption::Listener gone(interruption, [&] { isTold = true; });
    }
    interruption->request();
    EXPECT_FALSE(isTold);
}

TEST(Interruption, aListenerMayGoWhileItIsTold)
{
    const auto interruption = std::make_shared<Interruption>();
    std::unique_ptr<Interruption::Listener> listener;
    listener = std::make_unique<Interruption::Listener>(interruption, [&] { listener.reset(); });
    interruption->request();
    EXPECT_EQ(listener, nullptr);
}

TEST(Interruption, aListenerOfNothingHearsNothing)
{
    bool isTold = false;
    const Interruption::Listener listener(nullptr, [&] { isTold = true; });
    EXPECT_FALSE(isTold);
}

TEST(Interruption, endsAWait)
{
    const auto interruption = std::make_shared<Interruption>();
    EXPECT_FALSE(interruption->waitFor(milliseconds(1)));
    std::thread requesting([&] { interruption->request(); });
    EXPECT_TRUE(interruption->waitFor(std::chrono::minutes(10)));
    requesting.join();
    EXPECT_TRUE(interruption->waitFor(std::chrono::minutes(10)));
}

TEST(Interruption, belongsToTheThreadsWorkInItsScope)
{
    const auto outer = std::make_shared<Interruption>();
    const auto inner = std::make_shared<Interruption>();
    EXPECT_EQ(Interruption::current(), nullptr);
    {
        const Interruption::Scope outerScope(outer);
        {
            const Interruption::Scope innerScope(inner);
            EXPECT_EQ(Interruption::current(), inner);
            std::thread([] { EXPECT_EQ(Interruption::current(), nullptr); }).join();
            const Interruption::Scope nobody(nullptr);
            EXPECT_EQ(Interruption::current(), nullptr);
        }
        EXPECT_EQ(Interruption::current(), outer);
    }
    EXPECT_EQ(Interruption::current(), nullptr);
}

TEST(Interruption, mayBeRequestedAndListenedToByManyThreadsAtOnce)
{
    for (int round = 0; round < 200; ++round) {
        const auto interruption = std::make_shared<Interruption>();
        const auto told = std::make_shared<std::atomic<int>>(0);
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                const Interruption::Listener listener(interruption, [told] { ++*told; });
                EXPECT_TRUE(interruption->waitFor(std::chrono::minutes(1)));
                EXPECT_TRUE(waitUntil([&] { return *told >= 1; }));
            });
        }
        threads.emplace_back([&] { interruption->request(); });
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_LE(*told, 3);
    }
}

} // namespace
} // namespace orlo::test
