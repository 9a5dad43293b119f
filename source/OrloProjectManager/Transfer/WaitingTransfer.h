#pragma once

#include "TransferChain.h"

#include <functional>

namespace orlo {

/// For the worker of a transfer that waits for its requests, unlike the workers of chains. So it is an operation, which the end of the
/// process breaks off; what nobody waits for is dropped then, as its caller's ErrorCode may be gone.
/// work: gives the outcome, with the ErrorCode that goes with it.
void settleByWaiting(TransferOutcome& outcome, const CallSite& site, const std::function<PromiseData(ErrorCode&)>& work);

} // namespace orlo
