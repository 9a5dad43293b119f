#pragma once

#include <functional>

namespace orlo::test {

/// Runs the work on a thread with a stack of 512 KiB, and waits for its end.
void onSmallStack(const std::function<void()>& work);

} // namespace orlo::test
