#include "HostCall.h"

#include "NeverDestroyed.h"
#include "ProcessEnd.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace orlo {

namespace {

constexpr std::chrono::seconds longestHostCall{2};

struct HostCalls
{
    std::mutex mutex;
    std::condition_variable ended;
    unsigned underWay = 0;
    bool isSilent = false;
};

HostCalls& hostCalls()
{
    static HostCalls& calls = utils::neverDestroyed(new HostCalls);
    return calls;
}

thread_local unsigned hostCallsOfThisThread = 0;

/// A host may call exit out of one.
void silenceReports()
{
    HostCalls& calls = hostCalls();
    std::unique_lock lock(calls.mutex);
    calls.isSilent = true;
    calls.ended.wait_for(lock, longestHostCall, [&] { return calls.underWay == hostCallsOfThisThread; });
}

} // namespace

void HostCall::watchEnd()
{
    ProcessEnd::at(ProcessEnd::Step::silenceReports, &silenceReports);
    static const ProcessEnd::Watch watch{};
}

HostCall::HostCall()
{
    HostCalls& calls = hostCalls();
    const std::lock_guard lock(calls.mutex);
    m_isGiven = !calls.isSilent;
    calls.underWay += m_isGiven ? 1 : 0;
    hostCallsOfThisThread += m_isGiven ? 1 : 0;
}

HostCall::~HostCall()
{
    if (!m_isGiven)
        return;
    HostCalls& calls = hostCalls();
    const std::lock_guard lock(calls.mutex);
    --calls.underWay;
    --hostCallsOfThisThread;
    calls.ended.notify_all();
}

} // namespace orlo
