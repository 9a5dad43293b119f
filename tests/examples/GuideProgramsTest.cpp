// The programs with which the host guide shows progress, patience and insight.

#include "support/ChildProcess.h"
#include "support/DemoPlatform.h"
#include "support/TempFolder.h"
#include "support/Waiting.h"

#include <gmock/gmock.h>

#include <regex>
#include <sstream>

namespace {

using orlo::test::ChildProcess;
using orlo::test::DemoPlatform;
using orlo::test::runProgram;
using orlo::test::RunResult;
using orlo::test::TempFolder;
using orlo::test::waitUntil;
using orlo::test::writeFile;
using testing::EndsWith;
using testing::MatchesRegex;

TEST(HostGuide, AnUploadShowsHowFarItIs)
{
    const DemoPlatform platform;
    const TempFolder folder;
    writeFile(folder.path("plan.dwg"), std::string(3'000'000, 'p'));
    const RunResult run = runProgram({UPLOAD_WITH_BAR, platform.url(), folder.path("plan.dwg").u8string()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, EndsWith("uploaded\n"));
    EXPECT_THAT(run.output, MatchesRegex("([0-9]+ of [0-9]+ bytes\n)+uploaded\n"));
}

TEST(HostGuide, AnUploadIsGivenUpWhenItsUserPressesEnter)
{
    DemoPlatform platform;
    orlo::platform::Fault slow;
    slow.kind = orlo::platform::FaultKind::Delay;
    slow.path = "/file/new";
    slow.delayMilliseconds = 600'000;
    const int fault = platform.faults().add(slow);
    const TempFolder folder;
    writeFile(folder.path("plan.dwg"), "plan");
    ChildProcess program({UPLOAD_WITH_BAR, platform.url(), folder.path("plan.dwg").u8string()});
    EXPECT_TRUE(waitUntil([&] { return platform.faults().count(fault) == 1; }));
    program.tell("");
    EXPECT_EQ("cancelled\n", program.output());
    EXPECT_EQ(1, program.wait());
}

TEST(HostGuide, APatientHostGetsANewToken)
{
    DemoPlatform platform;
    platform.change(orlo::platform::addProject, {"Riverside School", "demo-account"});
    const RunResult run = runProgram({PATIENT_HOST, platform.url()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_EQ("a new token for demo\n1 projects\n", run.output);
}

TEST(HostGuide, ATraceHasALineForEachCall)
{
    const DemoPlatform platform;
    const RunResult run = runProgram({TRACE, platform.url()});
    EXPECT_EQ(0, run.exitCode);
    EXPECT_THAT(run.output, MatchesRegex("GET /projects 200, attempt 1, [0-9]+ bytes, [0-9]+ ms, request [0-9a-f-]+\n"));
}

TEST(HostGuide, WhatWentWrongIsToldInWords)
{
    EXPECT_EQ("no connection: check your connection\n", runProgram({WHAT_WENT_WRONG, "http://127.0.0.1:1"}).output);
    DemoPlatform platform;
    orlo::platform::Fault closed;
    closed.path = "/projects";
    closed.status = 403;
    platform.faults().add(closed);
    EXPECT_EQ("The platform refused it; the id of your account may be wrong\n", runProgram({WHAT_WENT_WRONG, platform.url()}).output);
}

TEST(TracedSession, WritesATraceOfItsCalls)
{
    const TempFolder folder;
    const std::string trace = folder.path("trace.json").u8string();
    const RunResult run = runProgram({"env", "XDG_DATA_HOME=" + folder.path("data").u8string(), AUTHORING_SESSION, "--trace", trace});
    EXPECT_EQ(0, run.exitCode) << run.output;
    std::istringstream lines(orlo::test::readFile(folder.path("trace.json")));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "[");
    const std::regex bar(
        R"re(\{"ph":"X","pid":1,"tid":\d+,"ts":\d+,"dur":\d+,"name":"[\w:]+","args":\{"status":\d+,"attempt":\d+,"sent":\d+,)re"
        R"re("received":\d+,"request":"[0-9a-f-]{36}"\}\},)re");
    int bars = 0;
    for (; std::getline(lines, line); ++bars)
        EXPECT_TRUE(std::regex_match(line, bar)) << line;
    EXPECT_GT(bars, 50);
}

} // namespace
