#include "WaitingTransfer.h"

#include <BaseCommon/Interruption.h>
#include <OrloNetwork/Lifetime/Operation.h>
#include <OrloNetwork/Lifetime/WorkPermit.h>

namespace orlo {

void settleByWaiting(TransferOutcome& outcome, const CallSite& site, const std::function<PromiseData(ErrorCode&)>& work)
{
    const bool isAwaited = Interruption::isAwaited(Interruption::current());
    const auto isDropped = [isAwaited] { return !isAwaited && http::WorkPermit::doesProcessEnd(); };
    try {
        const http::Operation operation;
        ErrorCode error;
        const PromiseData data = work(error);
        if (!isDropped())
            outcome.settle(data, error, site);
    }
    catch (...) {
        if (!isDropped())
            throw;
    }
}

} // namespace orlo
