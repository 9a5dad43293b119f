#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace orlo::bench {

/// How a program ended, what it cost, and what it said.
struct Ended
{
    bool good = false;
    double seconds = 0;
    double peakMebibytes = 0;
    std::string output;
};

/// Runs a program to its end. Its words on the standard error stay visible.
Ended run(const std::vector<std::string>& command);

/// The same, and ends this program with a line if it fails.
std::string mustRun(const std::vector<std::string>& command);

/// The local platform in a process of its own, so that its memory and its threads are not the client's.
class PlatformProcess
{
public:
    PlatformProcess(const std::string& program, const std::string& dataFolder);
    ~PlatformProcess();

    PlatformProcess(const PlatformProcess&) = delete;
    PlatformProcess& operator=(const PlatformProcess&) = delete;

    const std::string& url() const { return m_url; }

private:
    pid_t m_process = -1;
    std::string m_url;
};

} // namespace orlo::bench
