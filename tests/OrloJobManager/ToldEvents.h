#pragma once

#include "support/Waiting.h"

#include <OrloJobManager/IJobManager.h>

#include <algorithm>
#include <mutex>
#include <vector>

namespace orlo::test {

/// Keeps what a manager tells. Must outlive it.
class ToldEvents
{
public:
    using Kind = JobEvent::Kind;

    void listen(JobManagerOptions& options)
    {
        options.onEvent = [this](const JobEvent& event) {
            const std::lock_guard lock(m_mutex);
            m_events.push_back(event);
        };
    }

    std::vector<JobEvent> all() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }
    std::vector<Kind> kinds() const
    {
        std::vector<Kind> kinds;
        for (const JobEvent& event : all())
            kinds.push_back(event.kind);
        return kinds;
    }
    std::size_t count(Kind kind) const
    {
        const std::vector<Kind> told = kinds();
        return static_cast<std::size_t>(std::count(told.begin(), told.end(), kind));
    }
    bool waitFor(Kind kind, std::size_t times = 1) const
    {
        return waitUntil([&] { return count(kind) >= times; });
    }
    /// The last of a kind; it must have been told.
    JobEvent last(Kind kind) const
    {
        const std::vector<JobEvent> events = all();
        const auto found = std::find_if(events.rbegin(), events.rend(), [&](const JobEvent& event) { return event.kind == kind; });
        return found == events.rend() ? JobEvent() : *found;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<JobEvent> m_events;
};

} // namespace orlo::test
