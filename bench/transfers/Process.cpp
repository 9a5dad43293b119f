#include "Process.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orlo::bench {

namespace {

[[noreturn]] void giveUp(const std::string& words)
{
    std::fprintf(stderr, "The benchmark gives up: %s\n", words.c_str());
    std::exit(1);
}

struct Child
{
    pid_t process;
    int output;
};

Child start(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        giveUp("no pipe");
    const pid_t process = ::fork();
    if (process < 0)
        giveUp("no process");
    if (process == 0) {
        ::dup2(ends[1], STDOUT_FILENO);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(ends[1]);
    return {process, ends[0]};
}

std::string readAll(int descriptor)
{
    std::string text;
    char piece[4096];
    for (ssize_t count = 0; (count = ::read(descriptor, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<std::size_t>(count));
    ::close(descriptor);
    return text;
}

std::string readLine(int descriptor)
{
    std::string line;
    for (char c = 0; ::read(descriptor, &c, 1) == 1 && c != '\n';)
        line += c;
    return line;
}

} // namespace

Ended run(const std::vector<std::string>& command)
{
    const auto begin = std::chrono::steady_clock::now();
    const Child child = start(command);
    Ended ended;
    ended.output = readAll(child.output);
    int status = 0;
    rusage used{};
    ::wait4(child.process, &status, 0, &used);
    ended.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    ended.good = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    ended.peakMebibytes = static_cast<double>(used.ru_maxrss) / 1024;
    return ended;
}

std::string mustRun(const std::vector<std::string>& command)
{
    Ended ended = run(command);
    if (!ended.good)
        giveUp(command.front() + " failed: " + ended.output);
    return std::move(ended.output);
}

PlatformProcess::PlatformProcess(const std::string& program, const std::string& dataFolder)
{
    const Child child = start({program, "--data", dataFolder});
    m_process = child.process;
    const std::string line = readLine(child.output);
    const std::string head = "listening on ";
    if (line.compare(0, head.size(), head) != 0)
        giveUp("the local platform doesn't start");
    m_url = line.substr(head.size());
}

PlatformProcess::~PlatformProcess()
{
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
}

} // namespace orlo::bench
