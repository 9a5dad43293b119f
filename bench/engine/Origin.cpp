#include "Origin.h"

#include <sstream>

namespace orlo::bench {

Origin::Origin(const std::filesystem::path& folder)
    : m_process((std::filesystem::read_symlink("/proc/self/exe").parent_path() / "OrloBenchOrigin").string(), folder.string())
{
    std::istringstream words(m_process.url());
    for (int& port : m_ports)
        words >> port;
    words >> m_caFile;
}

Counts Origin::takeCounts() const
{
    std::istringstream words(ask("/counts"));
    Counts counts;
    words >> counts.connections >> counts.smallRequests >> counts.uploadSize >> counts.uploadSum;
    return counts;
}

void Origin::takeSums(bool on) const
{
    ask(on ? "/sums/on" : "/sums/off");
}

std::string Origin::ask(const std::string& path) const
{
    return mustRun({"curl", "-q", "-sSf", "--noproxy", "*", "http://127.0.0.1:" + std::to_string(m_ports[4]) + path});
}

} // namespace orlo::bench
