#include "CallInProgress.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <vector>

namespace orlo::http {

namespace {

struct Calls
{
    std::mutex mutex;
    std::vector<pplx::cancellation_token_source> running;
    bool areCancelled = false;
};

// Never destroyed: the last calls come back while the statics go.
Calls& calls()
{
    static Calls& instance = *new Calls;
    return instance;
}

thread_local CallInProgress* innermost = nullptr;

} // namespace

CallInProgress::CallInProgress() : m_outer(innermost)
{
    if (!m_permit)
        throw std::runtime_error("the process ends");
    Calls& all = calls();
    const std::lock_guard lock(all.mutex);
    all.running.push_back(m_source);
    innermost = this;
    if (all.areCancelled)
        m_source.cancel(); // nobody listens yet
}

CallInProgress::~CallInProgress()
{
    innermost = m_outer;
    Calls& all = calls();
    const std::lock_guard lock(all.mutex);
    all.running.erase(std::find(all.running.begin(), all.running.end(), m_source));
}

pplx::cancellation_token CallInProgress::token()
{
    return innermost ? innermost->m_source.get_token() : pplx::cancellation_token::none();
}

void CallInProgress::cancelAll()
{
    std::vector<pplx::cancellation_token_source> running;
    {
        Calls& all = calls();
        const std::lock_guard lock(all.mutex);
        running = all.running;
        all.areCancelled = true;
    }
    // Without the lock: what is cancelled may come back at once.
    for (const pplx::cancellation_token_source& call : running)
        call.cancel();
}

} // namespace orlo::http
