#pragma once

#include "Transfer.h"

namespace orlo::http {

/// Carries a transfer on the thread that calls, to its end: no hand-over between threads, and no other call that it could hold up.
/// How it ended its answer tells.
void carryHere(const std::shared_ptr<Transfer>& transfer);

} // namespace orlo::http
