#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace orlo::test {

/// A program that runs beside the test; killed at the end if it still runs.
class ChildProcess
{
public:
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void kill();
    /// Waits for its end.   Returns: its exit code, or the number of the signal that ended it, negated.
    int wait();
    /// All that it has written, once it has ended.
    std::string output();

private:
    pid_t m_process = -1;
    int m_output = -1;
};

} // namespace orlo::test
