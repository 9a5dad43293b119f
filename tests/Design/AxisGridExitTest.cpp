#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

TEST(AxisGridExit, gridsAreWrittenAndReadAfterTheStaticsOfTheLibraryAreGone)
{
    EXPECT_EQ(runProgram({AXIS_GRID_WRITER}).exitCode, 0);
}

} // namespace
} // namespace orlo::test
