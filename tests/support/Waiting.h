#pragma once

#include <chrono>
#include <thread>

namespace orlo::test {

/// Waits until a condition holds.   Returns: whether it does, false after the bound.
template <class Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = std::chrono::seconds(20))
{
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace orlo::test
