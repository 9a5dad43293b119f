#pragma once

#include <functional>
#include <map>
#include <string>

// What the hosts that tests start and kill have in common.
namespace orlo::test {

using HostCommands = std::map<std::string, std::function<std::string(const std::string& argument)>>;

/// Reads commands, a line each, until "leave" or the end of the input; answers each with a line. A command is a word and what follows
/// behind a blank. Besides the given ones there are
///
///   start [WORKERS]  the job manager, with two workers where none are told; "yes" or "no", as for the next ones
///   stop, idle
///   error            the errors that were logged since the last time, "-" for none
///   die-at POINT     from then on dieAt(POINT) kills the process
///   die-at-step N    the process dies at that step of its database files from then on
int runHost(const HostCommands& commands);

/// Whether this is the point at which the process is to die; if so it doesn't come back.
void dieAt(const std::string& point);

std::string yesOrNo(bool answer);

} // namespace orlo::test
