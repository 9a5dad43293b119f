#pragma once

#include <thread>
#include <type_traits>
#include <vector>

namespace orlo::test {

/// Does some work on so many threads at once, with the thread's number if it wants that, and waits for all of them.
template <class Work>
void inThreads(int count, Work work)
{
    std::vector<std::thread> threads;
    for (int number = 0; number < count; ++number)
        threads.emplace_back([&work, number] {
            if constexpr (std::is_invocable_v<Work&, int>)
                work(number);
            else
                work();
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace orlo::test
