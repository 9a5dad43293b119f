#include "support/ChildProcess.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

// What every program for people answers when it is asked what it is.
namespace {

using orlo::test::ChildProcess;
using orlo::test::runProgram;
using orlo::test::RunResult;
using testing::AllOf;
using testing::HasSubstr;

std::vector<std::string> programs()
{
    std::vector<std::string> paths;
    std::istringstream list(PROGRAMS);
    for (std::string path; std::getline(list, path, '|');)
        paths.push_back(path);
    return paths;
}

std::string nameOf(const std::string& path)
{
    return std::filesystem::u8path(path).filename().u8string();
}

class Programs : public testing::TestWithParam<std::string>
{};

INSTANTIATE_TEST_SUITE_P(All, Programs, testing::ValuesIn(programs()), [](const testing::TestParamInfo<std::string>& test) {
    std::string name = nameOf(test.param);
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST_P(Programs, TellTheirOptions)
{
    const RunResult run = runProgram({GetParam(), "--help"}, ChildProcess::Errors::joined);
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, AllOf(HasSubstr(nameOf(GetParam()) + " "), HasSubstr("\n  ")));
    EXPECT_GT(std::count(run.output.begin(), run.output.end(), '\n'), 3) << run.output;
}

TEST_P(Programs, TellTheirVersion)
{
    const RunResult run = runProgram({GetParam(), "--version"}, ChildProcess::Errors::joined);
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ(nameOf(GetParam()) + " " + PROGRAM_VERSION + "\n", run.output);
}

} // namespace
