#include "ProgressMeter.h"

#include <utility>

namespace orlo {

namespace {

void addTo(std::uint64_t& sum, std::int64_t bytes)
{
    sum += static_cast<std::uint64_t>(bytes); // a negative one subtracts
}

} // namespace

ProgressMeter::ProgressMeter(std::shared_ptr<ProgressMeter> outer) : m_outer(std::move(outer))
{}

ProgressMeter::~ProgressMeter() = default;

void ProgressMeter::count(Kind kind, std::int64_t done, std::int64_t inAll)
{
    if (done == 0 && inAll == 0)
        return;
    {
        const std::lock_guard lock(m_mutex);
        addTo(m_progress.bytesDone, done);
        addTo(m_progress.bytesInAll, inAll);
        if (kind == Kind::ofFile) {
            addTo(m_progress.fileBytesDone, done);
            addTo(m_progress.fileBytesInAll, inAll);
        }
        ++m_state;
        m_changed.notify_all();
    }
    if (m_outer)
        m_outer->count(kind, done, inAll);
}

Progress ProgressMeter::now() const
{
    const std::lock_guard lock(m_mutex);
    return m_progress;
}

unsigned long long ProgressMeter::state() const
{
    const std::lock_guard lock(m_mutex);
    return m_state;
}

bool ProgressMeter::waitForChange(unsigned long long seen)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_state != seen || m_isClosed; });
    return m_state != seen;
}

bool ProgressMeter::waitForClose(std::chrono::milliseconds atMost)
{
    std::unique_lock lock(m_mutex);
    return m_closed.wait_for(lock, atMost, [&] { return m_isClosed; });
}

void ProgressMeter::close()
{
    const std::lock_guard lock(m_mutex);
    m_isClosed = true;
    m_changed.notify_all();
    m_closed.notify_all();
}

} // namespace orlo
