#pragma once

#include <OrloNetwork/WorkPermit.h>

#include <pplx/pplxtasks.h>

namespace orlo::http {

/// A request that this thread waits for, from before its client is made until after it has gone. The end of the process cancels it and
/// lets its thread come back, since cpprestsdk's pool is about to go and a client must not outlive it.
class ORLO_NETWORK_API CallInProgress
{
public:
    /// Throws std::runtime_error once the end of the process has come.
    CallInProgress();
    ~CallInProgress();

    CallInProgress(const CallInProgress&) = delete;
    CallInProgress& operator=(const CallInProgress&) = delete;

    /// Cancels what this thread waits for; none where it waits for nothing.
    static pplx::cancellation_token token();
    /// Of all threads; new ones are cancelled as they begin.
    static void cancelAll();

private:
    const WorkPermit m_permit;
    const pplx::cancellation_token_source m_source;
    CallInProgress* const m_outer;
};

} // namespace orlo::http
