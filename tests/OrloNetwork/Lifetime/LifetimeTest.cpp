#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>
#include <sys/wait.h>

namespace orlo::test {
namespace {

/// What a program printed, and its exit code; -1 if a signal ended it.
struct Outcome
{
    std::string output;
    int exitCode = -1;
};

Outcome run(const std::string& command)
{
    Outcome outcome;
    std::FILE* const pipe = popen((command + " 2>&1").c_str(), "r");
    std::array<char, 4096> piece;
    for (std::size_t got = 0; pipe && (got = fread(piece.data(), 1, piece.size(), pipe)) > 0;)
        outcome.output.append(piece.data(), got);
    const int status = pipe ? pclose(pipe) : -1;
    // The shell tells of a signal with 128 and above.
    if (WIFEXITED(status) && WEXITSTATUS(status) < 128)
        outcome.exitCode = WEXITSTATUS(status);
    return outcome;
}

TEST(LifetimeTest, loadingTheLibraryStartsNoThreadAndOpensNothing)
{
    const Outcome outcome = run("exec " LOAD_ONLY_PROGRAM " " PROJECT_MANAGER_LIBRARY);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "threads: 0\nfiles: 0\n");
}

class ExitTest : public testing::TestWithParam<const char*>
{};

TEST_P(ExitTest, isCleanEveryTime)
{
    for (int i = 0; i < 20; ++i) {
        const Outcome outcome = run(std::string("exec " EXIT_WHILE_BUSY_PROGRAM " ") + GetParam());
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
        ASSERT_EQ(outcome.output, "");
    }
}

INSTANTIATE_TEST_SUITE_P(WhileAFailedRequestWaitsForItsNextAttempt, ExitTest, testing::Values("waiting"));
INSTANTIATE_TEST_SUITE_P(WhileRequestsAreRepeated, ExitTest, testing::Values("repeating"));

TEST(ExitOrderTest, letsARequestThatWaitsForItsAnswerComeBack)
{
    for (int i = 0; i < 20; ++i) {
        const Outcome outcome = run("exec " EXIT_WHILE_BUSY_PROGRAM " request");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.output;
        ASSERT_EQ(outcome.output, "the request came back\n");
    }
}

TEST(ExitOrderTest, refusesWhatAStaticDestructorAsksForLater)
{
    const Outcome outcome = run("exec " EXIT_WHILE_BUSY_PROGRAM " late");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "the process ends\n");
}

} // namespace
} // namespace orlo::test
