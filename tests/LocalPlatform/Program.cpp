#include "Program.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orlo::platform::test {

Program::Program(std::vector<std::string> arguments)
{
    int ends[2];
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    arguments.insert(arguments.begin(), ORLO_LOCAL_PLATFORM_PROGRAM);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    EXPECT_EQ(::posix_spawn(&m_pid, ORLO_LOCAL_PLATFORM_PROGRAM, &actions, nullptr, pointers.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    m_output = ::fdopen(ends[0], "r");
}

Program::~Program()
{
    if (m_pid > 0)
        end(SIGKILL);
    std::fclose(m_output);
}

std::string Program::line()
{
    char buffer[200] = "";
    if (!std::fgets(buffer, sizeof buffer, m_output))
        return {};
    const std::string text(buffer);
    return text.substr(0, text.find('\n'));
}

std::string Program::address()
{
    const std::string words = "listening on ";
    const std::string first = line();
    EXPECT_EQ(first.compare(0, words.size() + 17, words + "http://127.0.0.1:"), 0) << first;
    return first.substr(words.size());
}

long Program::peakMemoryKiB() const
{
    std::ifstream status("/proc/" + std::to_string(m_pid) + "/status");
    for (std::string fact; std::getline(status, fact);) {
        if (fact.compare(0, 6, "VmHWM:") == 0)
            return std::stol(fact.substr(6));
    }
    ADD_FAILURE() << "no memory figure";
    return 0;
}

int Program::end(int signal)
{
    int status = 0;
    ::kill(m_pid, signal);
    EXPECT_EQ(::waitpid(m_pid, &status, 0), m_pid);
    m_pid = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace orlo::platform::test
