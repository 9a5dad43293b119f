#include "ProgressReports.h"

#include "HostCall.h"
#include "Platform.h"
#include "ProgressMeter.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace orlo {

namespace {

constexpr std::chrono::milliseconds betweenReports{100};

} // namespace

/// Shared with its thread.
class ProgressReports::Teller
{
public:
    Teller(std::shared_ptr<ProgressMeter> meter, ProgressCallback onProgress)
        : m_meter(std::move(meter)), m_onProgress(std::move(onProgress)), m_told(m_meter->state())
    {}

    static void start(const std::shared_ptr<Teller>& self)
    {
        try {
            // Before: the thread may be through at once.
            self->m_isRunning = true;
            std::thread([self] { self->run(); }).detach();
        }
        catch (const std::system_error&) { // none to be had
            self->m_isRunning = false;
        }
    }

    void end()
    {
        m_meter->close();
        {
            std::unique_lock lock(m_mutex);
            if (m_thread == std::this_thread::get_id())
                return; // the host ends it in a call: that one was the last
            m_ended.wait(lock, [this] { return !m_isRunning; });
        }
        if (m_meter->state() != m_told)
            tell();
    }

private:
    void run()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_thread = std::this_thread::get_id();
        }
        while (m_meter->waitForChange(m_told)) {
            tell();
            if (m_meter->waitForClose(betweenReports))
                break;
        }
        utils::forgetOpenSslOfThread(); // a host may use it
        const std::lock_guard lock(m_mutex);
        m_isRunning = false;
        m_ended.notify_all();
    }

    void tell()
    {
        // First: a change that comes meanwhile is told the next time.
        m_told = m_meter->state();
        const HostCall call;
        if (!call)
            return;
        try {
            m_onProgress(m_meter->now());
        }
        catch (...) { // nothing of a host's leaves here
        }
    }

    const std::shared_ptr<ProgressMeter> m_meter;
    const ProgressCallback m_onProgress;
    unsigned long long m_told; ///< the thread's, and then that of whoever ends it

    // The thread is nobody's: a host's thread that dies in its scope, when the process ends, leaves none behind.
    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::thread::id m_thread;
    bool m_isRunning = false;
};

ProgressReports::ProgressReports(std::shared_ptr<ProgressMeter> meter, ProgressCallback onProgress)
    : m_teller(std::make_shared<Teller>(std::move(meter), std::move(onProgress)))
{
    HostCall::watchEnd();
    Teller::start(m_teller);
}

ProgressReports::~ProgressReports()
{
    m_teller->end();
}

} // namespace orlo
