#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace orlo::test {

/// Holds whoever enters until it is opened.
class Gate
{
public:
    ~Gate() { open(); }
    void enter()
    {
        std::unique_lock lock(m_mutex);
        ++m_inside;
        m_opened.wait(lock, [this] { return m_open; });
        --m_inside;
    }
    void open()
    {
        const std::lock_guard lock(m_mutex);
        m_open = true;
        m_opened.notify_all();
    }
    int inside() const { return m_inside; }

private:
    std::mutex m_mutex;
    std::condition_variable m_opened;
    std::atomic<int> m_inside{0};
    bool m_open = false;
};

} // namespace orlo::test
