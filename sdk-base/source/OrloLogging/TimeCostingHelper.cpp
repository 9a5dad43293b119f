#include "TimeCostingHelper.h"

#include <BaseCommon/NeverDestroyed.h>

#include <map>
#include <mutex>

namespace orlo {

namespace {

using Clock = std::chrono::steady_clock;

struct Watch
{
    Clock::time_point start;
    bool running = false;
    std::chrono::nanoseconds delta{0};
};

struct State
{
    std::mutex mutex;
    std::map<std::string, Watch> watches;
};

State& state()
{
    static State& instance = utils::neverDestroyed(new State);
    return instance;
}

} // namespace

TimeCostingHelper* TimeCostingHelper::instance() noexcept
{
    static TimeCostingHelper& helper = utils::neverDestroyed(new TimeCostingHelper);
    return &helper;
}

void TimeCostingHelper::begin(const std::string& label)
{
    const std::lock_guard lock(state().mutex);
    Watch& watch = state().watches[label];
    watch.start = Clock::now();
    watch.running = true;
}

void TimeCostingHelper::end(const std::string& label)
{
    // The clock is read under the lock, so that another thread's later begin can't make the time negative.
    const std::lock_guard lock(state().mutex);
    const auto found = state().watches.find(label);
    if (found == state().watches.end() || !found->second.running)
        return;
    found->second.delta = Clock::now() - found->second.start;
    found->second.running = false;
}

std::chrono::nanoseconds TimeCostingHelper::getDelta(const std::string& label) const
{
    const std::lock_guard lock(state().mutex);
    const auto found = state().watches.find(label);
    return found == state().watches.end() ? std::chrono::nanoseconds::zero() : found->second.delta;
}

} // namespace orlo
