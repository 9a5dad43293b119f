#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace orlo::platform {

/// How signed addresses behave, and how many are being read. Any thread may call.
class Transfers
{
public:
    std::int64_t signedLifetime() const { return m_signedLifetime; }
    void setSignedLifetime(std::int64_t seconds) { m_signedLifetime = seconds; }
    bool gzipAnswers() const { return m_gzipAnswers; }
    void setGzipAnswers(bool on) { m_gzipAnswers = on; }
    std::string plainPutAnswer() const;
    void setPlainPutAnswer(const std::string& body);

    /// A download is open as long as the result lives. The result must not outlive this object.
    std::shared_ptr<const void> openDownload();
    std::size_t openDownloads() const;
    std::size_t peakDownloads() const;
    /// From now on the peak is that of what is open now and later.
    void clearPeak();

private:
    void closeDownload();

    std::atomic<std::int64_t> m_signedLifetime{900};
    std::atomic<bool> m_gzipAnswers{false};
    mutable std::mutex m_mutex;
    std::string m_plainPutAnswer;
    std::size_t m_open = 0;
    std::size_t m_peak = 0;
};

} // namespace orlo::platform
