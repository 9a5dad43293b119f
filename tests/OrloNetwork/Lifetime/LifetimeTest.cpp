#include "support/ChildProcess.h"

#include <gtest/gtest.h>

namespace orlo::test {
namespace {

RunResult exitWhile(const std::string& what)
{
    return runProgram({EXIT_WHILE_BUSY_PROGRAM, what}, ChildProcess::Errors::joined);
}

TEST(LifetimeTest, loadingTheLibraryStartsNoThreadAndOpensNothing)
{
    const RunResult outcome = runProgram({LOAD_ONLY_PROGRAM, PROJECT_MANAGER_LIBRARY}, ChildProcess::Errors::joined);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "threads: 0\nfiles: 0\n");
}

class ExitTest : public testing::TestWithParam<const char*>
{};

TEST_P(ExitTest, isCleanEveryTime)
{
    for (int i = 0; i < 20; ++i) {
        const RunResult outcome = exitWhile(GetParam());
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
        ASSERT_EQ(outcome.output, "");
    }
}

INSTANTIATE_TEST_SUITE_P(WhileAFailedRequestWaitsForItsNextAttempt, ExitTest, testing::Values("waiting"));
INSTANTIATE_TEST_SUITE_P(WhileRequestsAreRepeated, ExitTest, testing::Values("repeating"));

TEST(ExitOrderTest, letsARequestThatWaitsForItsAnswerComeBack)
{
    for (int i = 0; i < 20; ++i) {
        const RunResult outcome = exitWhile("request");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
        ASSERT_EQ(outcome.output, "the request came back\n");
    }
}

TEST(ExitOrderTest, refusesWhatAStaticDestructorAsksForLater)
{
    const RunResult outcome = exitWhile("late");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "the process ends\n");
}

} // namespace
} // namespace orlo::test
