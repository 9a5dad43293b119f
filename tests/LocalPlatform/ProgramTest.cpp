#include "Program.h"

#include "PlatformFixture.h"
#include "support/TempFolder.h"

#include <csignal>

namespace orlo::platform::test {
namespace {

using orlo::test::TempFolder;

TEST(Program, TellsItsAddressServesTheDemoUserAndEndsCleanly)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        Program program({"--port", "0"});
        const Caller demo(program.address(), "demo-token");
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
        const std::string url = program.address();
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
        const Caller demo(program.address(), "demo-token");
        EXPECT_EQ(demo.post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, 200);
        EXPECT_EQ(program.end(SIGKILL), -1);
    }
    Program program({"--data", data});
    EXPECT_EQ(Caller(program.address(), "demo-token").get("/v2/projects/p1").status, 200);
}

TEST(Program, RefusesWrongArguments)
{
    EXPECT_EQ(Program({"--port", "x"}).end(0), 2);
    EXPECT_EQ(Program({"--user", "a:b"}).end(0), 2);
    EXPECT_EQ(Program({"--wrong"}).end(0), 2);
    EXPECT_EQ(Program({"extra"}).end(0), 2);
    EXPECT_EQ(Program({"--port", "70000"}).end(0), 1);
}

TEST(Program, TellsItsOptions)
{
    Program program({"--help"});
    EXPECT_EQ(program.line(), "A collaboration platform on this machine, on 127.0.0.1 only.");
    EXPECT_EQ(program.end(0), 0);
}

} // namespace
} // namespace orlo::platform::test
