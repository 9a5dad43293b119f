#pragma once

#include <OrloLogging/Export.h>

#include <chrono>
#include <string>

namespace orlo {

/// Named stopwatches. One label is one watch: parallel users of a label overwrite each other.
class ORLO_LOGGING_API TimeCostingHelper
{
public:
    TimeCostingHelper(const TimeCostingHelper&) = delete;
    TimeCostingHelper& operator=(const TimeCostingHelper&) = delete;

    /// Never null; valid until the process is gone.   Threads: any, for all operations.
    static TimeCostingHelper* instance() noexcept;

    void begin(const std::string& label);
    void end(const std::string& label);

    /// Returns: the time between the latest begin and its end; 0 for a label that has not been begun and ended.
    std::chrono::nanoseconds getDelta(const std::string& label) const;

private:
    TimeCostingHelper() = default;
    ~TimeCostingHelper() = default;
};

} // namespace orlo
