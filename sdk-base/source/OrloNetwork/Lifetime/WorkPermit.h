#pragma once

#include <BaseCommon/Interruption.h>
#include <OrloNetwork/Export.h>

#include <memory>

namespace orlo::http {

/// Held by a piece of work on a thread that may outlive main, so that it runs whole or not at all: while one is held the end
/// of the process waits for it, ten seconds at the most. Once the end has come none is given any more, as cpprestsdk's pool and the statics
/// are about to go; but to work that an operation or a job waits for, until that has come back. A thread that holds one is given further
/// ones. Pieces must be short, and wait for nothing but what the end of the process cancels.
class ORLO_NETWORK_API WorkPermit
{
public:
    /// isAwaited: an operation or a job waits for this work.
    explicit WorkPermit(bool isAwaited = false);
    ~WorkPermit();

    WorkPermit(const WorkPermit&) = delete;
    WorkPermit& operator=(const WorkPermit&) = delete;

    /// False: the process ends, and the work must be dropped.
    explicit operator bool() const { return m_given; }

    static bool doesProcessEnd();

private:
    bool m_given;
};

/// The same for an operation of a host's thread, which the end of the process breaks off.
class OperationPermit
{
public:
    explicit OperationPermit(std::shared_ptr<Interruption> interruption);
    ~OperationPermit();

    OperationPermit(const OperationPermit&) = delete;
    OperationPermit& operator=(const OperationPermit&) = delete;

    explicit operator bool() const { return m_given; }

private:
    const std::shared_ptr<Interruption> m_interruption;
    bool m_given;
};

} // namespace orlo::http
