#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace orlo::platform {

/// How many calls came, by method and path, refused and struck ones too, control calls not; and how many of them are downloads that aren't
/// through. Any thread may call.
class RequestLog
{
public:
    void note(const std::string& method, const std::string& path);
    /// Empty method: every method. The prefix is a decoded path.
    std::size_t count(const std::string& method, const std::string& pathPrefix) const;

    /// A download is open as long as the result lives. The result must not outlive this object.
    std::shared_ptr<const void> openDownload();
    /// Signed GETs whose last bytes haven't been handed out yet, and how many there were at once since `clear`.
    std::size_t openDownloads() const;
    std::size_t peakDownloads() const;

    void clear();

private:
    void closeDownload();

    mutable std::mutex m_mutex;
    std::map<std::pair<std::string, std::string>, std::size_t> m_counts;
    std::size_t m_openDownloads = 0;
    std::size_t m_peakDownloads = 0;
};

} // namespace orlo::platform
