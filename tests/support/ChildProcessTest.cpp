#include "support/ChildProcess.h"

#include <gmock/gmock.h>

#include <csignal>
#include <future>
#include <system_error>

namespace orlo::test {
namespace {

using testing::ElementsAre;

std::vector<std::string> shell(const std::string& commandLine)
{
    return {"sh", "-c", commandLine};
}

TEST(ChildProcess, tellsItsExitCodeAgainAndAgain)
{
    ChildProcess child(shell("exit 3"));
    EXPECT_EQ(child.wait(), 3);
    child.kill();
    EXPECT_EQ(child.wait(), 3);
}

TEST(ChildProcess, tellsTheSignalThatEndedIt)
{
    ChildProcess terminated(shell("exec cat"));
    terminated.signal(SIGTERM);
    EXPECT_EQ(terminated.wait(), 128 + SIGTERM);
    ChildProcess killed(shell("exec cat"));
    killed.kill();
    EXPECT_EQ(killed.wait(), ChildProcess::killed);
}

TEST(ChildProcess, answersLinesAndEndsWithItsInput)
{
    ChildProcess child(shell("while read line; do echo \"<$line>\"; done; exit 7"));
    EXPECT_EQ(child.ask("one"), "<one>");
    EXPECT_EQ(child.ask("two words"), "<two words>");
    child.endInput();
    EXPECT_EQ(child.readLine(), "");
    EXPECT_EQ(child.wait(), 7);
}

TEST(ChildProcess, onesInputIsNotHeldOpenByAnother)
{
    ChildProcess first(shell("cat; echo over"));
    const ChildProcess second(shell("exec cat"));
    first.endInput();
    EXPECT_EQ(first.output(), "over\n");
}

TEST(ChildProcess, thatIsGoneTakesWordsAndGivesNone)
{
    ChildProcess child(shell("exit 0"));
    child.wait();
    child.tell("anyone?");
    EXPECT_EQ(child.ask("anyone?"), "");
}

TEST(ChildProcess, isKilledByAnotherThreadWhileOneWaits)
{
    ChildProcess child(shell("exec cat"));
    const auto killing = std::async(std::launch::async, [&] { child.killSoon(); });
    EXPECT_EQ(child.wait(), ChildProcess::killed);
}

TEST(ChildProcess, aLineThatItDidNotEndDoesNotCount)
{
    EXPECT_THAT(ChildProcess(shell("printf 'one\\n\\ntwo\\nthr'")).lines(), ElementsAre("one", "", "two"));
}

TEST(ChildProcess, theMemoryOfOneThatRunsIsKnown)
{
    ChildProcess child(shell("while read line; do echo; done"));
    child.ask("are you there?");
    EXPECT_GT(child.peakMemory(), 0u);
}

TEST(ChildProcess, thatIsNoProgramIsAnException)
{
    EXPECT_THROW(ChildProcess({"/no/such/program"}), std::system_error);
}

TEST(RunProgram, givesTheWholeOutputHoweverLong)
{
    const RunResult result = runInShell("i=0; while [ $i -lt 20000 ]; do echo 0123456789; i=$((i+1)); done; exit 5");
    EXPECT_EQ(result.exitCode, 5);
    EXPECT_EQ(result.output.size(), 220000u);
}

TEST(RunProgram, takesTheErrorsAmongTheOutputWhereAsked)
{
    EXPECT_EQ(runInShell("echo out; echo error >&2", ChildProcess::Errors::joined).output, "out\nerror\n");
}

TEST(RunProgram, handsWordsOverAsTheyAre)
{
    const std::string odd = "a 'b' \"c\" $d \\e\n*";
    EXPECT_EQ(runProgram({"printf", "%s", odd}).output, odd);
    EXPECT_EQ(runInShell("printf %s " + quoted(odd)).output, odd);
}

} // namespace
} // namespace orlo::test
