#pragma once

#include <BaseCommon/Export.h>

namespace orlo {

/// A call of a host's function on a thread of ours: while one lives, the end of the process waits for it, two seconds at the most; once
/// that has come, none is to be made, as what the host's function uses is about to go.
class ORLO_BASE_API HostCall
{
public:
    HostCall();
    ~HostCall();
    HostCall(const HostCall&) = delete;
    HostCall& operator=(const HostCall&) = delete;

    /// False: the process ends, and the call must not be made.
    explicit operator bool() const { return m_isGiven; }

    /// From now on the end of the process is watched: to be called when the host hands its function over, so that what the function was
    /// made with goes behind the watch.
    static void watchEnd();

private:
    bool m_isGiven;
};

} // namespace orlo
