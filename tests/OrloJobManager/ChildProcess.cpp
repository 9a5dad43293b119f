#include "ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace orlo::test {

namespace {

/// Our own ends of the pipes stay ours: another child that kept one would keep this one from seeing its input's end.
void makePipe(int (&ends)[2])
{
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command)
{
    // A child that is gone is an answer, not the end of this process.
    ::signal(SIGPIPE, SIG_IGN);
    int input[2];
    int output[2];
    makePipe(input);
    makePipe(output);
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    m_process = ::fork();
    if (m_process == 0) {
        ::dup2(input[0], STDIN_FILENO);
        ::dup2(output[1], STDOUT_FILENO);
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(input[0]);
    ::close(output[1]);
    m_input = input[1];
    m_output = output[0];
}

ChildProcess::~ChildProcess()
{
    kill();
    ::close(m_input);
    ::close(m_output);
}

std::string ChildProcess::ask(const std::string& line)
{
    tell(line);
    return readLine(std::chrono::seconds(60));
}

void ChildProcess::tell(const std::string& line)
{
    const std::string text = line + '\n';
    if (::write(m_input, text.data(), text.size()) < 0) { // it is gone; whoever reads the answer sees that
    }
}

std::string ChildProcess::readLine(std::chrono::seconds atMost)
{
    const auto end = std::chrono::steady_clock::now() + atMost;
    std::size_t length = m_unread.find('\n');
    while (length == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now()).count();
        pollfd waiting{m_output, POLLIN, 0};
        char bytes[4096];
        if (left <= 0 || ::poll(&waiting, 1, static_cast<int>(left)) <= 0)
            return {};
        const ssize_t count = ::read(m_output, bytes, sizeof bytes);
        if (count <= 0)
            return {};
        m_unread.append(bytes, static_cast<std::size_t>(count));
        length = m_unread.find('\n');
    }
    const std::string line = m_unread.substr(0, length);
    m_unread.erase(0, length + 1);
    return line;
}

std::vector<std::string> ChildProcess::restOfOutput()
{
    std::vector<std::string> lines;
    for (std::string line = readLine(std::chrono::seconds(60)); !line.empty(); line = readLine(std::chrono::seconds(60)))
        lines.push_back(line);
    return lines;
}

void ChildProcess::kill()
{
    if (m_process > 0)
        ::kill(m_process, SIGKILL);
    wait();
}

int ChildProcess::wait()
{
    if (m_process <= 0)
        return m_result;
    int status = 0;
    while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    m_process = -1;
    m_result = WIFSIGNALED(status) ? 1000 + WTERMSIG(status) : WEXITSTATUS(status);
    return m_result;
}

} // namespace orlo::test
