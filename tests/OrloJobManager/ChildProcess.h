#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orlo::test {

/// A program that takes a line and answers with a line. Killed at the end if it still runs.
class ChildProcess
{
public:
    explicit ChildProcess(const std::vector<std::string>& command);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Of a process that runs.
    pid_t id() const { return m_process; }
    /// Returns: the answer; an empty text if the process is gone or takes longer than a minute.
    std::string ask(const std::string& line);
    void tell(const std::string& line);

    void kill();
    /// What it still wrote, in whole lines; waits for its end.
    std::vector<std::string> restOfOutput();
    /// Waits for the end.   Returns: the exit code; 1000 and the signal's number for one that was killed.
    int wait();

private:
    std::string readLine(std::chrono::seconds atMost);

    pid_t m_process = -1;
    int m_input = -1;
    int m_output = -1;
    int m_result = -1;
    std::string m_unread;
};

} // namespace orlo::test
