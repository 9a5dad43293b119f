#pragma once

namespace orlo::test {

/// Ends this process, as a kill does, instead of its N-th call of the system from now on that sends, receives, or touches a file. 0: never.
/// For a program that has this source among its own, so that its functions stand in front of the system's.
void killAtCall(unsigned number);

/// The calls since then.
unsigned callsSince();

} // namespace orlo::test
