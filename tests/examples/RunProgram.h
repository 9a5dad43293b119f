#pragma once

#include <string>

namespace orlo::test {

struct RunResult
{
    int exitCode = -1;  ///< -1 for a program that did not end by itself
    std::string output; ///< the standard output
};

/// Runs a command line of the shell to its end, with nothing on its standard input.
RunResult runProgram(const std::string& commandLine);

/// A word of a command line, whatever it holds.
std::string quoted(const std::string& word);

} // namespace orlo::test
