#include "CallScope.h"

#include "Interruption.h"
#include "ProgressMeter.h"
#include "ProgressReports.h"

#include <exception>
#include <optional>
#include <utility>

namespace orlo {

namespace {

std::shared_ptr<ProgressMeter> outerMeter()
{
    const auto outer = Interruption::current();
    return outer ? outer->meter() : nullptr;
}

/// A scope waits for nothing itself: what it is in may.
std::shared_ptr<Interruption> boundTo(const std::shared_ptr<Interruption>& token, const std::shared_ptr<ProgressMeter>& meter)
{
    const auto outer = Interruption::current();
    return Interruption::within({outer, token, meter, Interruption::isAwaited(outer)});
}

std::shared_ptr<ProgressMeter> meterFor(const ProgressCallback& onProgress)
{
    return onProgress ? std::make_shared<ProgressMeter>(outerMeter()) : nullptr;
}

} // namespace

struct CallScope::State
{
    State(const std::shared_ptr<Interruption>& token, ProgressCallback onProgress)
        : meter(meterFor(onProgress)), scope(boundTo(token, meter))
    {
        if (meter)
            reports.emplace(meter, std::move(onProgress));
    }

    const std::shared_ptr<ProgressMeter> meter;
    const Interruption::Scope scope;
    std::optional<ProgressReports> reports;
};

CallScope::CallScope(const CancelToken& token, ProgressCallback onProgress)
{
    bind(token.interruption(), std::move(onProgress));
}

CallScope::CallScope(ProgressCallback onProgress)
{
    bind(nullptr, std::move(onProgress));
}

void CallScope::bind(const std::shared_ptr<Interruption>& token, ProgressCallback onProgress)
{
    try {
        m_state = std::make_unique<State>(token, std::move(onProgress));
    }
    catch (const std::exception&) { // no memory: what the host wants done is done all the same
    }
}

CallScope::~CallScope() = default;

} // namespace orlo
