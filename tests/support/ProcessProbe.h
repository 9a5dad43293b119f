#pragma once

#include <cstddef>
#include <set>
#include <string>

// What the system tells of processes.
namespace orlo::test {

/// The system's names for the threads of this process.
std::set<std::string> threadNames();
std::size_t threadCount();
/// Of what this process has open.
std::size_t descriptorCount();
std::size_t socketCount();

/// How much memory a process has, in bytes.
struct Memory
{
    std::size_t now = 0;
    std::size_t peak = 0;
};

/// process: its id; this one without it.   Returns: zeros where the system doesn't tell.
Memory memoryOf(const std::string& process = "self");

/// How much memory this process takes at the most while this lives, beyond what it had before.
class PeakMemory
{
public:
    PeakMemory();

    /// Whether the system has begun to count anew. If not, the largest amount of earlier times counts too.
    bool isExact() const { return m_isExact; }
    std::size_t mebibytes() const;

private:
    bool m_isExact;
    std::size_t m_before;
};

} // namespace orlo::test
