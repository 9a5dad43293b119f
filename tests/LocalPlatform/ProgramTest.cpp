#include "PlatformFixture.h"
#include "PlatformProgram.h"
#include "support/TempFolder.h"

#include <csignal>

namespace orlo::platform::test {
namespace {

using orlo::test::TempFolder;

TEST(Program, TellsItsAddressServesTheDemoUserAndEndsCleanly)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        PlatformProgram program({"--port", "0"});
        const Caller demo(program.address(), "demo-token");
        EXPECT_EQ(demo.get("/projects").status, 200);
        EXPECT_EQ(program.end(signal), 0);
        EXPECT_EQ(program.output(), "");
    }
}

TEST(Program, KeepsItsDataInTheFolderAndItsUsersAsAsked)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    for (const int expected : {200, 409}) {
        PlatformProgram program({"--data", data, "--port", "0", "--user", "u:a:t", "--user", "u2:a2:t:2"});
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
        PlatformProgram program({"--data", data});
        const Caller demo(program.address(), "demo-token");
        EXPECT_EQ(demo.post("/v3/projects", R"({"name":"A","status":"Ongoing","id":"p1"})").status, 200);
        program.kill();
    }
    PlatformProgram program({"--data", data});
    EXPECT_EQ(Caller(program.address(), "demo-token").get("/v2/projects/p1").status, 200);
}

TEST(Program, RefusesWrongArguments)
{
    EXPECT_EQ(PlatformProgram({"--port", "x"}).wait(), 2);
    EXPECT_EQ(PlatformProgram({"--user", "a:b"}).wait(), 2);
    EXPECT_EQ(PlatformProgram({"--wrong"}).wait(), 2);
    EXPECT_EQ(PlatformProgram({"extra"}).wait(), 2);
    EXPECT_EQ(PlatformProgram({"--port", "70000"}).wait(), 1);
}

TEST(Program, TellsItsOptions)
{
    PlatformProgram program({"--help"});
    EXPECT_EQ(program.readLine(), "A collaboration platform on this machine, on 127.0.0.1 only.");
    EXPECT_EQ(program.wait(), 0);
}

} // namespace
} // namespace orlo::platform::test
