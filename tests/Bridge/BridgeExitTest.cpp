#include "support/ChildProcess.h"
#include "support/RawServer.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

namespace orlo::test {
namespace {

TEST(BridgeExit, callsByTheBridgeAreUnderWayWhenMainReturns)
{
    const char* const told = std::getenv("ORLO_EXITS");
    const int exits = told ? std::atoi(told) : 20;
    TempFolder folder;
    RawServer server(RawAnswer::bytes(rawOk(R"({"code":10000,"data":[{"projectId":"p-1"}]})")));
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int i = 0; i < exits; ++i) {
        const std::string instant = std::to_string(random() % 20000);
        EXPECT_EQ(runProgram({BRIDGE_CALLER, folder.path().string(), server.url(), instant}).exitCode, 0) << "after " << instant << " us";
    }
    EXPECT_GT(server.requests().size(), 0u);
}

} // namespace
} // namespace orlo::test
