#include "RequestLog.h"

#include <algorithm>

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

std::shared_ptr<const void> RequestLog::openDownload()
{
    {
        const std::lock_guard lock(m_mutex);
        m_peakDownloads = std::max(m_peakDownloads, ++m_openDownloads);
    }
    return {this, [this](const void*) { closeDownload(); }};
}

void RequestLog::closeDownload()
{
    const std::lock_guard lock(m_mutex);
    --m_openDownloads;
}

std::size_t RequestLog::openDownloads() const
{
    const std::lock_guard lock(m_mutex);
    return m_openDownloads;
}

std::size_t RequestLog::peakDownloads() const
{
    const std::lock_guard lock(m_mutex);
    return m_peakDownloads;
}

/// Downloads that are open stay so, and are the peak for now.
void RequestLog::clear()
{
    const std::lock_guard lock(m_mutex);
    m_counts.clear();
    m_peakDownloads = m_openDownloads;
}

} // namespace orlo::platform
