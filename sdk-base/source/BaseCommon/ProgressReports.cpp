#include "ProgressReports.h"

#include "NeverDestroyed.h"
#include "Platform.h"
#include "ProcessEnd.h"
#include "ProgressMeter.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace orlo {

namespace {

constexpr std::chrono::milliseconds betweenReports{100};
constexpr std::chrono::seconds longestCall{2}; ///< that the end of the process waits for

/// The calls to hosts that are under way, so that none begins once the process ends.
class CallsToHosts
{
public:
    static CallsToHosts& instance()
    {
        static CallsToHosts& calls = utils::neverDestroyed(new CallsToHosts);
        return calls;
    }

    bool begin()
    {
        const std::lock_guard lock(m_mutex);
        if (m_isSilent)
            return false;
        m_callers.push_back(std::this_thread::get_id());
        return true;
    }

    void end()
    {
        const std::lock_guard lock(m_mutex);
        m_callers.erase(std::find(m_callers.begin(), m_callers.end(), std::this_thread::get_id()));
        m_ended.notify_all();
    }

    void silence()
    {
        std::unique_lock lock(m_mutex);
        m_isSilent = true;
        // A host may call exit out of one.
        m_ended.wait_for(lock, longestCall, [this] {
            return std::all_of(m_callers.begin(), m_callers.end(), [](const auto& caller) { return caller == std::this_thread::get_id(); });
        });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    std::vector<std::thread::id> m_callers;
    bool m_isSilent = false;
};

void watchEnd()
{
    ProcessEnd::at(ProcessEnd::Step::silenceReports, [] { CallsToHosts::instance().silence(); });
    static const ProcessEnd::Watch watch{};
}

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
        if (!CallsToHosts::instance().begin())
            return;
        try {
            m_onProgress(m_meter->now());
        }
        catch (...) { // nothing of a host's leaves here
        }
        CallsToHosts::instance().end();
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
    watchEnd();
    Teller::start(m_teller);
}

ProgressReports::~ProgressReports()
{
    m_teller->end();
}

} // namespace orlo
