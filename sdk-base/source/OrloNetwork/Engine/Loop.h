#pragma once

#include "Transfer.h"

namespace orlo::http {

/// Carries the transfers that nobody waits for on a thread of his own: any number of them on one thread, which comes with the first and
/// goes half a second after the last, with the connections that were kept. Nothing on it waits but for the network.   Threads: any.
class Loop
{
public:
    /// Never destroyed: the thread may outlive the statics when the process ends.
    static Loop& instance();

    /// How it ended the transfer's answer tells. Throws where there is no thread to be had, and at the end of the process.
    void carry(const std::shared_ptr<Transfer>& transfer);

    /// For the end of the process: cancels what is under way and waits for the thread.
    void endBy(Transfer::Clock::time_point end);

private:
    Loop();

    struct State;
    const std::shared_ptr<State> m_state;
};

} // namespace orlo::http
