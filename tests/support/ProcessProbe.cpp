#include "ProcessProbe.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace orlo::test {

namespace {

namespace fs = std::filesystem;

constexpr const char* descriptors = "/proc/self/fd";

std::size_t entriesOf(const char* folder)
{
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

/// Returns: whether the system has forgotten the largest amount so far.
bool forgetPeak()
{
    std::ofstream file("/proc/self/clear_refs");
    file << "5" << std::flush;
    return file.good();
}

} // namespace

std::set<std::string> threadNames()
{
    std::set<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/task"))
        names.insert(entry.path().filename().string());
    return names;
}

std::size_t threadCount()
{
    return entriesOf("/proc/self/task");
}

std::size_t descriptorCount()
{
    return entriesOf(descriptors);
}

std::size_t socketCount()
{
    const fs::directory_iterator all(descriptors);
    return static_cast<std::size_t>(std::count_if(begin(all), end(all), [](const fs::directory_entry& entry) {
        std::error_code gone;
        return fs::read_symlink(entry.path(), gone).string().find("socket:") == 0;
    }));
}

Memory memoryOf(const std::string& process)
{
    Memory memory;
    std::ifstream status("/proc/" + process + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, 6, "VmRSS:") == 0)
            memory.now = std::stoul(line.substr(6)) * 1024;
        else if (line.compare(0, 6, "VmHWM:") == 0)
            memory.peak = std::stoul(line.substr(6)) * 1024;
    }
    return memory;
}

PeakMemory::PeakMemory() : m_isExact(forgetPeak()), m_before(memoryOf().now)
{}

std::size_t PeakMemory::mebibytes() const
{
    const std::size_t peak = memoryOf().peak;
    return (peak - std::min(peak, m_before)) >> 20;
}

} // namespace orlo::test
