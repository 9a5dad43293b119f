#pragma once

#include <BaseCommon/Export.h>
#include <BaseCommon/Progress.h>

#include <memory>

namespace orlo {

class ProgressMeter;

/// Tells a host how far some work is: ten times a second at most, one call at a time, on a thread of its own, so that a host that takes its
/// time holds nothing up. What the host throws is dropped. None is called once the process ends.
class ORLO_BASE_API ProgressReports
{
public:
    /// Without a thread to be had, the last state alone is told.
    ProgressReports(std::shared_ptr<ProgressMeter> meter, ProgressCallback onProgress);
    /// Waits for a call that is under way, and tells the last state on this thread if that hasn't been told.
    ~ProgressReports();
    ProgressReports(const ProgressReports&) = delete;
    ProgressReports& operator=(const ProgressReports&) = delete;

private:
    class Teller;

    std::shared_ptr<Teller> m_teller;
};

} // namespace orlo
