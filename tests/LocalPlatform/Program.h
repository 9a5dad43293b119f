#pragma once

#include <cstdio>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orlo::platform::test {

/// The program as a child process.
class Program
{
public:
    explicit Program(std::vector<std::string> arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The next line of its output, without the line's end; empty at the end of the output.
    std::string line();
    /// The address in its first line.
    std::string address();
    /// The most memory it had so far.
    long peakMemoryKiB() const;
    /// The exit code after the signal, -1 if it died of it. Signal 0 just waits.
    int end(int signal);

private:
    pid_t m_pid = 0;
    FILE* m_output = nullptr;
};

} // namespace orlo::platform::test
