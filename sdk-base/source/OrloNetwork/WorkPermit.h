#pragma once

#include <OrloNetwork/Export.h>

namespace orlo::http {

/// Held by a piece of work on a thread that may outlive main, so that it runs whole or not at all: while one is held the end
/// of the process waits for it, ten seconds at the most, and once the end has come no more are given, as cpprestsdk's pool and the statics are about to go.
/// A thread that holds one is given further ones. Pieces must be short, and wait for nothing.
class ORLO_NETWORK_API WorkPermit
{
public:
    WorkPermit();
    ~WorkPermit();

    WorkPermit(const WorkPermit&) = delete;
    WorkPermit& operator=(const WorkPermit&) = delete;

    /// False: the process ends, and the work must be dropped.
    explicit operator bool() const { return m_given; }

private:
    bool m_given;
};

} // namespace orlo::http
