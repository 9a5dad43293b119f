#include "EngineProbe.h"
#include "Gate.h"
#include "support/Waiting.h"

#include <OrloNetwork/Engine/Workers.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

namespace orlo::test {
namespace {

using namespace std::chrono_literals;
using http::Workers;

class WorkersTest : public testing::Test
{
protected:
    /// The most threads that there were beside those of before, until so many pieces are done.
    std::size_t mostThreadsUntil(int pieces)
    {
        std::size_t most = 0;
        EXPECT_TRUE(waitUntil([&] {
            most = std::max(most, threadCount());
            return done == pieces;
        }));
        return most - before;
    }

    void run(int pieces, std::chrono::microseconds length)
    {
        for (int i = 0; i < pieces; ++i) {
            Workers::instance().run([this, length] {
                std::this_thread::sleep_for(length);
                ++done;
            });
        }
    }

    const std::size_t before = quietThreadCount();
    std::atomic<int> done{0};
};

TEST_F(WorkersTest, aFewThreadsDoManyShortPieces)
{
    run(40, 5ms);
    EXPECT_LE(mostThreadsUntil(40), 6U);
}

TEST_F(WorkersTest, aFewThreadsDoShortPiecesForAsLongAsTheyCome)
{
    run(2000, 1ms);
    EXPECT_LE(mostThreadsUntil(2000), 6U);
}

TEST_F(WorkersTest, noThreadIsLeftWhenNothingWasToBeDoneForASecond)
{
    run(40, 5ms);
    ASSERT_TRUE(waitUntil([&] { return done == 40; }));
    EXPECT_GT(threadCount(), before);
    EXPECT_TRUE(waitUntil([&] { return threadCount() == before; }, 2s)) << threadCount() - before;
}

TEST_F(WorkersTest, whatBlocksMakesRoomForWhatDoesNot)
{
    const auto gate = std::make_shared<Gate>();
    for (int i = 0; i < 20; ++i)
        Workers::instance().run([gate] { gate->enter(); });
    run(1, 0ms);
    EXPECT_TRUE(waitUntil([&] { return done == 1; }, 2s));
    EXPECT_EQ(gate->inside(), 20);
    gate->open();
}

TEST_F(WorkersTest, besideWhatBlocksManyPiecesAreDoneInShortTime)
{
    const auto gate = std::make_shared<Gate>();
    for (int i = 0; i < 8; ++i)
        Workers::instance().run([gate] { gate->enter(); });
    ASSERT_TRUE(waitUntil([&] { return gate->inside() == 8; }, 2s));
    run(500, 0ms);
    EXPECT_TRUE(waitUntil([&] { return done == 500; }, 2s)) << done;
    gate->open();
}

TEST_F(WorkersTest, thereIsABoundToTheThreads)
{
    const auto gate = std::make_shared<Gate>();
    for (int i = 0; i < 270; ++i) {
        Workers::instance().run([this, gate] {
            gate->enter();
            ++done;
        });
    }
    EXPECT_TRUE(waitUntil([&] { return gate->inside() == 256; }, 8s)) << gate->inside();
    std::this_thread::sleep_for(100ms);
    EXPECT_EQ(gate->inside(), 256);
    EXPECT_EQ(threadCount() - before, 256U);
    gate->open();
    EXPECT_TRUE(waitUntil([&] { return done == 270; }));
}

TEST_F(WorkersTest, whatAPieceThrowsHarmsNoOther)
{
    Workers::instance().run([] { throw std::runtime_error("piece"); });
    Workers::instance().run([] { throw 7; });
    run(1, 0ms);
    EXPECT_TRUE(waitUntil([&] { return done == 1; }));
}

TEST_F(WorkersTest, whatAPieceHoldsGoesWithIt)
{
    const auto held = std::make_shared<int>(1);
    Workers::instance().run([held] {});
    EXPECT_TRUE(waitUntil([&] { return held.use_count() == 1; }, 2s));
}

} // namespace
} // namespace orlo::test
