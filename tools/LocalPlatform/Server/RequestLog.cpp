#include "RequestLog.h"

namespace orlo::platform {

void RequestLog::note(const std::string& method, const std::string& path)
{
    const std::lock_guard lock(m_mutex);
    ++m_counts[{method, path}];
}

std::size_t RequestLog::count(const std::string& method, const std::string& pathPrefix) const
{
    const std::lock_guard lock(m_mutex);
    std::size_t sum = 0;
    for (const auto& [call, times] : m_counts) {
        if ((method.empty() || call.first == method) && call.second.compare(0, pathPrefix.size(), pathPrefix) == 0)
            sum += times;
    }
    return sum;
}

void RequestLog::clear()
{
    const std::lock_guard lock(m_mutex);
    m_counts.clear();
}

} // namespace orlo::platform
