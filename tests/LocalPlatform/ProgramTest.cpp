#include "PlatformFixture.h"
#include "support/TempFolder.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

namespace orlo::platform::test {
namespace {

using orlo::test::TempFolder;

/// The program as a child process.
class Program
{
public:
    explicit Program(std::vector<std::string> arguments)
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
    ~Program()
    {
        if (m_pid > 0)
            end(SIGKILL);
        std::fclose(m_output);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// The next line of its output, without the line's end; empty at the end of the output.
    std::string line()
    {
        char buffer[200] = "";
        if (!std::fgets(buffer, sizeof buffer, m_output))
            return {};
        const std::string text(buffer);
        return text.substr(0, text.find('\n'));
    }
    /// The exit code after the signal, -1 if it died of it. Signal 0 just waits.
    int end(int signal)
    {
        int status = 0;
        ::kill(m_pid, signal);
        EXPECT_EQ(::waitpid(m_pid, &status, 0), m_pid);
        m_pid = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t m_pid = 0;
    FILE* m_output = nullptr;
};

/// The address in the program's one line.
std::string addressIn(const std::string& line)
{
    const std::string words = "listening on ";
    EXPECT_EQ(line.compare(0, words.size() + 17, words + "http://127.0.0.1:"), 0) << line;
    return line.substr(words.size());
}

TEST(Program, TellsItsAddressServesTheDemoUserAndEndsCleanly)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program({"--port", "0"});
        const Caller demo(addressIn(program.line()), "demo-token");
        EXPECT_EQ(demo.get("/projects").status, 200);
        EXPECT_EQ(program.end(signal), 0);
        EXPECT_EQ(program.line(), "");
    }
}

TEST(Program, KeepsItsDataInTheFolderAndItsUsersAsAsked)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    for (const int expected : {200, 409}) {
        Program program({"--data", data, "--port", "0", "--user", "u:a:t", "--user", "u2:a2:t:2"});
        const std::string url = addressIn(program.line());
        EXPECT_EQ(Caller(url, "t").post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, expected);
        EXPECT_EQ(Caller(url, "t:2").get("/projects").status, 200);
        EXPECT_EQ(Caller(url, "demo-token").get("/projects").status, 401);
        EXPECT_EQ(program.end(SIGTERM), 0);
    }
}

TEST(Program, SurvivesAKillWithItsData)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    {
        Program program({"--data", data});
        const Caller demo(addressIn(program.line()), "demo-token");
        EXPECT_EQ(demo.post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, 200);
        EXPECT_EQ(program.end(SIGKILL), -1);
    }
    Program program({"--data", data});
    EXPECT_EQ(Caller(addressIn(program.line()), "demo-token").get("/v2/projects/p1").status, 200);
}

TEST(Program, RefusesWrongArguments)
{
    EXPECT_EQ(Program({"--port", "x"}).end(0), 2);
    EXPECT_EQ(Program({"--user", "a:b"}).end(0), 2);
    EXPECT_EQ(Program({"--wrong"}).end(0), 2);
    EXPECT_EQ(Program({"extra"}).end(0), 2);
    EXPECT_EQ(Program({"--port", "70000"}).end(0), 1);
}

} // namespace
} // namespace orlo::platform::test
