#include "ChildProcess.h"

#include "ProcessProbe.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace orlo::test {

namespace {

/// Both ends are closed in every child that isn't given one: a child that kept one would keep another from seeing its input's end.
struct Pipe
{
    Pipe()
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            throw std::system_error(errno, std::generic_category(), "no pipe");
        out = ends[0];
        in = ends[1];
    }
    int out;
    int in;
};

/// What a child gets of this process.
class Legacy
{
public:
    Legacy(int input, int output, ChildProcess::Errors errors)
    {
        ::posix_spawn_file_actions_init(&m_files);
        ::posix_spawn_file_actions_adddup2(&m_files, input, STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&m_files, output, STDOUT_FILENO);
        if (errors == ChildProcess::Errors::joined)
            ::posix_spawn_file_actions_adddup2(&m_files, output, STDERR_FILENO);
        // It begins with the usual answer to a broken pipe, whatever is ours.
        sigset_t usual;
        ::sigemptyset(&usual);
        ::sigaddset(&usual, SIGPIPE);
        ::posix_spawnattr_init(&m_attributes);
        ::posix_spawnattr_setsigdefault(&m_attributes, &usual);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGDEF);
    }
    ~Legacy()
    {
        ::posix_spawnattr_destroy(&m_attributes);
        ::posix_spawn_file_actions_destroy(&m_files);
    }
    Legacy(const Legacy&) = delete;
    Legacy& operator=(const Legacy&) = delete;

    /// Returns: the id of the process.
    pid_t spawn(const std::vector<std::string>& command) const
    {
        std::vector<char*> words;
        for (const std::string& word : command)
            words.push_back(const_cast<char*>(word.c_str()));
        words.push_back(nullptr);
        pid_t id = -1;
        if (const int number = ::posix_spawnp(&id, words[0], &m_files, &m_attributes, words.data(), environ); number != 0)
            throw std::system_error(number, std::generic_category(), "no process for " + command.at(0));
        return id;
    }

private:
    posix_spawn_file_actions_t m_files;
    posix_spawnattr_t m_attributes;
};

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, Errors errors)
{
    // A child that is gone is an answer, not the end of this process.
    std::signal(SIGPIPE, SIG_IGN);
    const Pipe input;
    const Pipe output;
    m_id = Legacy(input.out, output.in, errors).spawn(command);
    ::close(input.out);
    ::close(output.in);
    m_input = input.in;
    m_output = output.out;
    m_reader = std::thread([this] { takeOutput(); });
}

ChildProcess::~ChildProcess()
{
    kill();
    m_reader.join();
    endInput();
    ::close(m_output);
}

void ChildProcess::takeOutput()
{
    char bytes[4096];
    ssize_t count = 0;
    do {
        count = ::read(m_output, bytes, sizeof bytes);
        const bool isOver = count == 0 || (count < 0 && errno != EINTR);
        const std::lock_guard lock(m_mutex);
        m_isOutputOver = isOver;
        if (count > 0)
            m_unread.append(bytes, static_cast<std::size_t>(count));
        m_changed.notify_all();
    } while (!m_isOutputOver);
}

void ChildProcess::tell(const std::string& line)
{
    const std::string text = line + '\n';
    if (::write(m_input, text.data(), text.size()) < 0) { // it is gone; whoever reads the answer sees that
    }
}

void ChildProcess::endInput()
{
    if (m_input >= 0)
        ::close(m_input);
    m_input = -1;
}

std::string ChildProcess::readLine()
{
    std::unique_lock lock(m_mutex);
    std::size_t length = std::string::npos;
    m_changed.wait_for(lock, std::chrono::minutes(1),
                       [&] { return (length = m_unread.find('\n')) != std::string::npos || m_isOutputOver; });
    if (length == std::string::npos)
        return {};
    const std::string line = m_unread.substr(0, length);
    m_unread.erase(0, length + 1);
    return line;
}

std::string ChildProcess::ask(const std::string& line)
{
    tell(line);
    return readLine();
}

std::string ChildProcess::output()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isOutputOver; });
    return std::exchange(m_unread, {});
}

std::vector<std::string> ChildProcess::lines()
{
    const std::string text = output();
    std::vector<std::string> lines;
    std::size_t begin = 0;
    for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1)
        lines.push_back(text.substr(begin, end - begin));
    return lines;
}

void ChildProcess::kill()
{
    killSoon();
    wait();
}

void ChildProcess::killSoon()
{
    signal(SIGKILL);
}

void ChildProcess::signal(int number)
{
    const std::lock_guard lock(m_mutex);
    if (!m_isGone)
        ::kill(m_id, number);
}

int ChildProcess::wait()
{
    // Its id stays its own until the lock is held, so that no signal goes astray.
    siginfo_t ended;
    while (!m_isGone && ::waitid(P_PID, static_cast<id_t>(m_id), &ended, WEXITED | WNOWAIT) < 0 && errno == EINTR) {
    }
    const std::lock_guard lock(m_mutex);
    int status = 0;
    if (!m_isGone && ::waitpid(m_id, &status, 0) == m_id)
        m_end = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    m_isGone = true;
    return m_end;
}

std::size_t ChildProcess::peakMemory() const
{
    return memoryOf(std::to_string(m_id)).peak;
}

RunResult runProgram(const std::vector<std::string>& command, ChildProcess::Errors errors)
{
    ChildProcess process(command, errors);
    process.endInput();
    RunResult result;
    result.output = process.output();
    result.exitCode = process.wait();
    return result;
}

RunResult runInShell(const std::string& commandLine, ChildProcess::Errors errors)
{
    return runProgram({"sh", "-c", commandLine}, errors);
}

std::string quoted(const std::string& word)
{
    std::string text = "'";
    for (const char c : word)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

} // namespace orlo::test
