#pragma once

#include "Transfer.h"

#include <atomic>
#include <functional>
#include <memory>

namespace orlo::http {

/// The handles that carry one transfer at a time.
struct Carrier
{
    curl::Multi multi = curl::makeMulti();
    curl::Easy easy = curl::makeEasy();
};

/// Carries a transfer on the thread that calls, to its end: no hand-over between threads, and no other call that it could hold up.
/// How it ended its answer tells.
void carryHere(const std::shared_ptr<Transfer>& transfer);

/// How a transfer left its handle.
struct Ending
{
    std::function<void()> tell; ///< ends the transfer, which runs the continuations that run at once
    /// False after a failure: libcurl may have left its room for receiving behind, and then refuses options of the next transfer.
    bool canBeUsedAgain;
};

/// The same on handles of the caller's, in two steps. Throws where libcurl fails; the transfer hasn't ended then.
/// stops: cancels it, when the handle is woken.
Ending carryOn(const std::shared_ptr<Transfer>& transfer, const Carrier& carrier, const std::atomic<bool>& stops);

} // namespace orlo::http
