#pragma once

#include "Transfer.h"

#include <memory>

namespace orlo::http {

/// Six threads, as many as a batch has streams, that each carry the download of one file at a time and write it where they received it. So
/// bytes go the shortest way, and a disk that holds one of them up delays no other. A thread goes on with what the continuations of its
/// transfer start, the next file of a batch as a rule, on the connection that it kept. All of them go half a second after the last file.
class FileThreads
{
public:
    /// Never destroyed: a thread may outlive the statics when the process ends.
    static FileThreads& instance();

    /// Returns: false if none is free. How it ended the transfer's answer tells.
    bool carry(const std::shared_ptr<Transfer>& transfer);

    /// For the end of the process: cancels what is under way, and waits until no thread is there but the caller's own.
    void endBy(Transfer::Clock::time_point end);

private:
    FileThreads();

    struct State;
    class Thread;
    const std::unique_ptr<State> m_state;
};

} // namespace orlo::http
