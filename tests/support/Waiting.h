#pragma once

#include <chrono>
#include <thread>

namespace orlo::test {

/// Waits until a condition holds, and looks every now and then, or all the time without a pause.
/// Returns: whether it does, false after the bound.
template <class Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = std::chrono::seconds(20),
               std::chrono::milliseconds pause = std::chrono::milliseconds(2))
{
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        if (pause.count() > 0)
            std::this_thread::sleep_for(pause);
        else
            std::this_thread::yield();
    }
    return true;
}

} // namespace orlo::test
