#include "ProcessEnd.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace orlo {

namespace {

constexpr std::size_t steps = static_cast<std::size_t>(ProcessEnd::Step::awaitCalls) + 1;

// Never destroyed, and made before any code runs.
std::array<std::atomic<void (*)()>, steps> workOfSteps{};
std::atomic<bool> doesEnd{false};

} // namespace

void ProcessEnd::at(Step step, void (*work)())
{
    void (*none)() = nullptr;
    workOfSteps[static_cast<std::size_t>(step)].compare_exchange_strong(none, work);
    // Either this sees the end, or the end sees the work.
    if (doesEnd)
        work();
}

bool ProcessEnd::hasBegun()
{
    return doesEnd;
}

ProcessEnd::Watch::~Watch()
{
    if (doesEnd.exchange(true))
        return;
    for (const auto& step : workOfSteps) {
        if (const auto work = step.load())
            work();
    }
}

} // namespace orlo
