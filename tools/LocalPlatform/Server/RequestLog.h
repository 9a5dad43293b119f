#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace orlo::platform {

/// How many calls came, by method and path.
class RequestLog
{
public:
    void note(const std::string& method, const std::string& path);
    /// Empty method: all methods.
    std::size_t count(const std::string& method, const std::string& pathPrefix) const;
    void clear();

private:
    mutable std::mutex m_mutex;
    std::map<std::pair<std::string, std::string>, std::size_t> m_counts;
};

} // namespace orlo::platform
