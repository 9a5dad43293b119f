#include "support/Threads.h"

#include <OrloLogging/TimeCostingHelper.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orlo::test {
namespace {

using std::chrono::nanoseconds;

void waitForTheClock()
{
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() == start) {
    }
}

TEST(TimeCostingHelper, givesZeroForAnUnknownLabel)
{
    EXPECT_EQ(TimeCostingHelper::instance()->getDelta("never begun"), nanoseconds(0));
}

TEST(TimeCostingHelper, givesZeroUntilTheEnd)
{
    TimeCostingHelper::instance()->begin("open");
    EXPECT_EQ(TimeCostingHelper::instance()->getDelta("open"), nanoseconds(0));
}

TEST(TimeCostingHelper, givesTheTimeBetweenBeginAndEnd)
{
    TimeCostingHelper::instance()->begin("whole");
    waitForTheClock();
    TimeCostingHelper::instance()->end("whole");
    EXPECT_GT(TimeCostingHelper::instance()->getDelta("whole"), nanoseconds(0));
}

TEST(TimeCostingHelper, anEndWithoutABeginIsIgnored)
{
    TimeCostingHelper::instance()->end("only ended");
    EXPECT_EQ(TimeCostingHelper::instance()->getDelta("only ended"), nanoseconds(0));
}

TEST(TimeCostingHelper, aSecondEndDoesNotMoveTheFirst)
{
    auto* const helper = TimeCostingHelper::instance();
    helper->begin("twice");
    helper->end("twice");
    const nanoseconds first = helper->getDelta("twice");
    waitForTheClock();
    helper->end("twice");
    EXPECT_EQ(helper->getDelta("twice"), first);
}

TEST(TimeCostingHelper, servesManyThreadsOnOneLabel)
{
    inThreads(4, [] {
        for (int n = 0; n < 500; ++n) {
            TimeCostingHelper::instance()->begin("shared");
            TimeCostingHelper::instance()->end("shared");
        }
    });
    EXPECT_GE(TimeCostingHelper::instance()->getDelta("shared"), nanoseconds(0));
}

} // namespace
} // namespace orlo::test
