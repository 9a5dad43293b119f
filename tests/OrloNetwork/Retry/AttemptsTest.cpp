#include <OrloNetwork/Retry/Attempts.h>

#include <gtest/gtest.h>

#include <thread>

namespace orlo::test {
namespace {

using http::Attempts;
using Kind = ProgressMeter::Kind;

TEST(Attempts, areThoseOfTheInnermostLoopOfTheThread)
{
    EXPECT_EQ(Attempts::current(), nullptr);
    const auto outer = std::make_shared<Attempts>();
    const auto inner = std::make_shared<Attempts>();
    const Attempts::Scope outerScope(outer);
    {
        const Attempts::Scope innerScope(inner);
        EXPECT_EQ(Attempts::current(), inner);
        std::thread([] { EXPECT_EQ(Attempts::current(), nullptr); }).join();
    }
    EXPECT_EQ(Attempts::current(), outer);
}

TEST(Attempts, takeBackWhatTheOneBeforeCounted)
{
    const auto meter = std::make_shared<ProgressMeter>();
    Attempts attempts;
    attempts.begin();
    attempts.count(meter, Kind::ofFile, 30, 100);
    attempts.count(meter, Kind::ofCall, 5, 5);
    attempts.begin();
    EXPECT_EQ(attempts.number(), 2U);
    EXPECT_EQ(meter->now().bytesInAll, 0U);
    attempts.count(meter, Kind::ofFile, 100, 100);
    EXPECT_EQ(meter->now().bytesDone, 100U);
    EXPECT_EQ(meter->now().fileBytesInAll, 100U);
}

} // namespace
} // namespace orlo::test
