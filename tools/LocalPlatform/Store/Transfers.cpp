#include "Transfers.h"

#include <algorithm>

namespace orlo::platform {

std::string Transfers::plainPutAnswer() const
{
    const std::lock_guard lock(m_mutex);
    return m_plainPutAnswer;
}

void Transfers::setPlainPutAnswer(const std::string& body)
{
    const std::lock_guard lock(m_mutex);
    m_plainPutAnswer = body;
}

std::shared_ptr<const void> Transfers::openDownload()
{
    {
        const std::lock_guard lock(m_mutex);
        m_peak = std::max(m_peak, ++m_open);
    }
    return {this, [this](const void*) { closeDownload(); }};
}

void Transfers::closeDownload()
{
    const std::lock_guard lock(m_mutex);
    --m_open;
}

std::size_t Transfers::openDownloads() const
{
    const std::lock_guard lock(m_mutex);
    return m_open;
}

std::size_t Transfers::peakDownloads() const
{
    const std::lock_guard lock(m_mutex);
    return m_peak;
}

void Transfers::clearPeak()
{
    const std::lock_guard lock(m_mutex);
    m_peak = m_open;
}

} // namespace orlo::platform
