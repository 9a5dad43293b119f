#pragma once

#include <functional>
#include <map>
#include <string>

// What programs that a test tells what to do have in common.
namespace orlo::test {

/// Each takes what follows its word behind a blank, and gives the answer.
using LineCommands = std::map<std::string, std::function<std::string(const std::string& argument)>>;

/// Reads commands, a line each, until "leave" or the end of the input; answers each with a line.   Returns: the exit code.
int obeyInput(const LineCommands& commands);

std::string yesOrNo(bool answer);

} // namespace orlo::test
