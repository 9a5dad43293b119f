#include "EventDispatcher.h"

#include "JobLog.h"

#include <utility>

namespace orlo {

void EventDispatcher::post(JobEvent event)
{
    if (!isUsed())
        return;
    const std::lock_guard lock(m_mutex);
    if (m_isClosed)
        return;
    m_events.push_back(std::move(event));
    m_changed.notify_one();
}

void EventDispatcher::close()
{
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    m_changed.notify_one();
}

void EventDispatcher::silence()
{
    m_isSilent = true;
    close();
}

void EventDispatcher::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isClosed || !m_events.empty(); });
        if (m_events.empty())
            return;
        JobEvent event = std::move(m_events.front());
        m_events.pop_front();
        lock.unlock();
        tell(std::move(event));
        lock.lock();
    }
}

// The outcome is asked for here: a job that never gives it away must not hold a worker.
void EventDispatcher::tell(JobEvent event) const
{
    if (m_isSilent)
        return;
    try {
        if (event.kind == JobEvent::Kind::Ended && event.error.isClear())
            event.error = event.job->ErrorInfo();
        m_callback(event);
    }
    catch (...) {
        log::warning(L"the callback for job events threw: " + wordsOfCaught());
    }
}

} // namespace orlo
