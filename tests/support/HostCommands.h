#pragma once

#include "LineCommands.h"

#include <string>

// What the hosts of the job library that tests start and kill have in common.
namespace orlo::test {

/// Obeys the commands of its input. Besides the given ones there are
///
///   start [WORKERS]  the job manager, with two workers where none are told; "yes" or "no", as for the next ones
///   stop, idle
///   error            the errors that were logged since the last time, "-" for none
///   die-at POINT     from then on dieAt(POINT) kills the process
///   die-at-step N    the process dies at that step of its database files from then on
int runHost(const LineCommands& commands);

/// Whether this is the point at which the process is to die; if so it doesn't come back.
void dieAt(const std::string& point);

} // namespace orlo::test
