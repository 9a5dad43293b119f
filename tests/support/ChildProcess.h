#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace orlo::test {

/// A program that runs beside the test; killed at the end if it still runs. What it writes is taken from it at once, so that it never waits
/// for a reader. Wherever an end is told, it is the exit code, or 128 and the number of the signal that ended it, as shells tell it.
class ChildProcess
{
public:
    /// Where its standard error goes: where the test's own goes, or among its output.
    enum class Errors { apart, joined };

    /// The end of one that was killed.
    static constexpr int killed = 128 + 9;

    /// command: the program and its arguments. A name without a separator is looked up in the usual places.
    explicit ChildProcess(const std::vector<std::string>& command, Errors errors = Errors::apart);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Gives it a line to read. One that is gone doesn't mind.
    void tell(const std::string& line);
    /// It finds the end of its input.
    void endInput();
    /// The next line of its output, without the line's end; empty at the end of the output, or if it takes longer than a minute.
    std::string readLine();
    /// For a program that answers a line with a line.   Returns: the answer, as readLine() does.
    std::string ask(const std::string& line);
    /// Waits for the end of its output.   Returns: all of it that nobody has read yet.
    std::string output();
    /// The same in lines; one that it didn't end doesn't count.
    std::vector<std::string> lines();

    /// Kills it and waits until it is gone.
    void kill();
    /// Kills it, and no more. May be called while another thread waits for the end.
    void killSoon();
    /// Sends a signal, as killSoon() does.
    void signal(int number);
    /// Waits for its end.   Returns: the end, again and again.
    int wait();
    /// The most memory it had so far, in bytes.
    std::size_t peakMemory() const;

private:
    void takeOutput();

    std::mutex m_mutex;
    int m_id = -1;
    bool m_isGone = false;
    int m_end = -1;
    int m_input = -1;
    int m_output = -1;
    std::condition_variable m_changed;
    std::string m_unread;
    bool m_isOutputOver = false;
    std::thread m_reader;
};

/// What a program wrote, and how it ended.
struct RunResult
{
    int exitCode = -1;
    std::string output;
};

/// Runs a program to its end, with nothing on its standard input.
RunResult runProgram(const std::vector<std::string>& command, ChildProcess::Errors errors = ChildProcess::Errors::apart);

/// The same for a command line of the shell.
RunResult runInShell(const std::string& commandLine, ChildProcess::Errors errors = ChildProcess::Errors::apart);

/// A word of a command line, whatever it holds.
std::string quoted(const std::string& word);

} // namespace orlo::test
