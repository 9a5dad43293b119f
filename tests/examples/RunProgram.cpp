#include "RunProgram.h"

#include <array>
#include <cstdio>
#include <stdexcept>
#include <sys/wait.h>

namespace orlo::test {

RunResult runProgram(const std::string& commandLine)
{
    std::FILE* const pipe = ::popen(("{ " + commandLine + "\n} </dev/null").c_str(), "r");
    if (!pipe)
        throw std::runtime_error("no process for: " + commandLine);
    RunResult result;
    std::array<char, 4096> buffer;
    for (std::size_t count = 1; count != 0;) {
        count = std::fread(buffer.data(), 1, buffer.size(), pipe);
        result.output.append(buffer.data(), count);
    }
    const int status = ::pclose(pipe);
    if (WIFEXITED(status))
        result.exitCode = WEXITSTATUS(status);
    return result;
}

std::string quoted(const std::string& word)
{
    std::string text = "'";
    for (const char c : word)
        text += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return text + "'";
}

} // namespace orlo::test
