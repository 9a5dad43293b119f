#include "ChildProcess.h"

#include <csignal>
#include <cstdlib>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace orlo::test {

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);

    char name[] = "/tmp/orlo-child-XXXXXX";
    m_output = ::mkstemp(name);
    ::unlink(name);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, m_output, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, m_output, STDERR_FILENO);
    const int failed = ::posix_spawn(&m_process, program.c_str(), &actions, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failed != 0)
        throw std::runtime_error("no process for " + program);
}

ChildProcess::~ChildProcess()
{
    kill();
    wait();
    ::close(m_output);
}

void ChildProcess::kill()
{
    if (m_process > 0)
        ::kill(m_process, SIGKILL);
}

int ChildProcess::wait()
{
    int status = 0;
    if (m_process <= 0 || ::waitpid(m_process, &status, 0) != m_process)
        return -1;
    m_process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string ChildProcess::output()
{
    std::string text;
    char piece[4096];
    ::lseek(m_output, 0, SEEK_SET);
    for (ssize_t got = 0; (got = ::read(m_output, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<std::size_t>(got));
    return text;
}

} // namespace orlo::test
