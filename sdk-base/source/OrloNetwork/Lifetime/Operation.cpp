#include "Operation.h"

#include "WorkPermit.h"

#include <stdexcept>
#include <utility>

namespace orlo::http {

namespace {

[[noreturn]] void refuse()
{
    throw std::runtime_error(WorkPermit::doesProcessEnd() ? "the process ends" : "the work was broken off");
}

void goOnUnlessBrokenOff(const Interruption& interruption)
{
    if (interruption.isRequested())
        refuse();
}

std::shared_ptr<Interruption> ofThisWork()
{
    auto interruption = Interruption::current();
    if (!interruption)
        return std::make_shared<Interruption>();
    // A scope of the host's waits for nothing itself.
    return Interruption::isAwaited(interruption) ? interruption : Interruption::within({interruption, nullptr, nullptr, true});
}

} // namespace

struct OutermostOperation
{
    OutermostOperation() : permit(interruption), scope(interruption)
    {
        if (!permit)
            refuse();
        goOnUnlessBrokenOff(*interruption);
    }

    const std::shared_ptr<Interruption> interruption = ofThisWork();
    const OperationPermit permit;
    const Interruption::Scope scope;
    OutermostOperation* around = nullptr;     ///< of a host's that calls out of an operation, in a scope of its own
    std::optional<Cancellation> cancellation; ///< made for the first request
};

namespace {

thread_local OutermostOperation* ofThisThread = nullptr;

} // namespace

Operation::Operation()
{
    if (isUnderWay()) {
        goOnUnlessBrokenOff(*ofThisThread->interruption);
        return;
    }
    m_outermost = std::make_unique<OutermostOperation>();
    m_outermost->around = std::exchange(ofThisThread, m_outermost.get());
}

Operation::~Operation()
{
    if (m_outermost)
        ofThisThread = m_outermost->around;
}

bool Operation::isUnderWay()
{
    return ofThisThread && ofThisThread->interruption == Interruption::current();
}

pplx::cancellation_token Operation::token()
{
    if (!ofThisThread)
        return pplx::cancellation_token::none();
    if (!ofThisThread->cancellation)
        ofThisThread->cancellation.emplace(ofThisThread->interruption);
    return ofThisThread->cancellation->token();
}

Cancellation::Cancellation(const std::shared_ptr<Interruption>& interruption)
{
    if (!interruption)
        return;
    m_source.emplace();
    m_listener.emplace(interruption, [source = *m_source] { source.cancel(); });
}

pplx::cancellation_token Cancellation::token() const
{
    return m_source ? m_source->get_token() : pplx::cancellation_token::none();
}

} // namespace orlo::http
